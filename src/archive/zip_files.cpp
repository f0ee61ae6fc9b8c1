#include <fcntl.h>
#include <fmt/format.h>
#include <minizip/zip.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <span>
#include <system_error>
#include <utility>

#include "archive/entry_path.hpp"
#include "archive/traditional_cipher.hpp"
#include "archive/zip.hpp"
#include "archive/zip_utilities.hpp"
#include "platform/foundation/file_descriptor.hpp"
#include "platform/foundation/files.hpp"
#include "platform/foundation/temporary_file.hpp"

namespace vantorium {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t bufferBytes = 65536;
constexpr uLong madeOnUnix = (3U << 8U) | 30U;
constexpr uLong encrypted = 1;
constexpr uLong nameIsUTF8 = 1U << 11U;
constexpr std::uint64_t largestPlainFile = 0xF0000000;  // room for what does not compress

using Failure = std::optional<ZipError>;

Failure fail(std::string detail) { return ZipError(ZipError::zipFail, std::move(detail)); }

Failure failedOn(const fs::path& path, int code) {
  return fail(posixError(code, "read", path).localizedDescription());
}

/// One file that is read from its start to its end, possibly more than once.
class Input {
 public:
  explicit Input(const fs::path& path) : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (!file_.isOpen() || ::fstat(file_.get(), &facts_) != 0) {
      error_ = errno;
    } else if (!S_ISREG(facts_.st_mode)) {
      error_ = EINVAL;
    }
  }

  int error() const { return error_; }
  const struct stat& facts() const { return facts_; }
  std::uint64_t size() const { return static_cast<std::uint64_t>(facts_.st_size); }

  /// Hands over all bytes in pieces, until `take` says no. Returns whether all were read and taken.
  template <typename Take>
  bool read(const Take& take) {
    std::array<char, bufferBytes> buffer;
    ssize_t count = ::lseek(file_.get(), 0, SEEK_SET) == 0 ? 1 : -1;
    while (count > 0) {
      do {
        count = ::read(file_.get(), buffer.data(), buffer.size());
      } while (count < 0 && errno == EINTR);
      if (count < 0) error_ = errno;
      if (count > 0 && !take(buffer.data(), static_cast<unsigned>(count))) return false;
    }
    return count == 0;
  }

 private:
  FileDescriptor file_;
  struct stat facts_ {};
  int error_ = 0;
};

zip_fileinfo infoOf(const struct stat& facts) {
  zip_fileinfo info{};
  std::tm time{};
  ::localtime_r(&facts.st_mtime, &time);
  info.tmz_date = {static_cast<uInt>(time.tm_sec),  static_cast<uInt>(time.tm_min),
                   static_cast<uInt>(time.tm_hour), static_cast<uInt>(time.tm_mday),
                   static_cast<uInt>(time.tm_mon),  static_cast<uInt>(std::max(time.tm_year + 1900, 1980))};
  info.external_fa = static_cast<uLong>(facts.st_mode) << 16U;
  return info;
}

uLong checksumOf(Input& input) {
  uLong checksum = 0;
  input.read([&](const char* bytes, unsigned count) {
    checksum = crc32(checksum, reinterpret_cast<const Bytef*>(bytes), count);
    return true;
  });
  return checksum;
}

/// Owns minizip's handle of a new archive. minizip is handed what zlib deflates here, for it cannot encrypt.
class ZipWriter {
 public:
  ZipWriter(const fs::path& path, const std::optional<std::string>& password, ZipCompression compression)
      : file_(zipOpen64(path.c_str(), APPEND_STATUS_CREATE)), password_(password) {
    isReady_ = deflateInit2(&stream_, static_cast<int>(compression), Z_DEFLATED, -MAX_WBITS, DEF_MEM_LEVEL,
                            Z_DEFAULT_STRATEGY) == Z_OK;
  }
  ~ZipWriter() {
    deflateEnd(&stream_);
    close();
  }
  ZipWriter(const ZipWriter&) = delete;
  ZipWriter& operator=(const ZipWriter&) = delete;

  bool isOpen() const { return file_ != nullptr && isReady_; }
  Failure add(const ProcessedFilePath& path);
  /// Writes the table of contents; false when it could not.
  bool close() { return file_ == nullptr || zipClose(std::exchange(file_, nullptr), nullptr) == ZIP_OK; }

 private:
  bool openEntry(const std::string& name, Input& input);
  bool writeCipherHeader(Input& input);
  bool writeContent(Input& input);
  bool deflateBytes(const char* bytes, unsigned count, int flush);
  bool write(std::span<char> bytes);

  zipFile file_;
  const std::optional<std::string>& password_;
  std::optional<TraditionalCipher> cipher_;
  z_stream stream_{};
  bool isReady_ = false;
  std::array<char, bufferBytes> deflated_;
};

bool ZipWriter::openEntry(const std::string& name, Input& input) {
  const zip_fileinfo info = infoOf(input.facts());
  const uLong flags = (isUTF8(name) ? nameIsUTF8 : 0) | (password_ ? encrypted : 0);
  return zipOpenNewFileInZip4_64(file_, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                                 Z_DEFAULT_COMPRESSION, 1, -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY,
                                 nullptr, 0, madeOnUnix, flags,
                                 input.size() > largestPlainFile ? 1 : 0) == ZIP_OK;
}

bool ZipWriter::write(std::span<char> bytes) {
  if (cipher_) cipher_->encrypt(bytes);
  return zipWriteInFileInZip(file_, bytes.data(), static_cast<unsigned>(bytes.size())) == ZIP_OK;
}

bool ZipWriter::writeCipherHeader(Input& input) {
  std::array<char, TraditionalCipher::headerBytes> header{};
  if (::getrandom(header.data(), header.size(), 0) != static_cast<ssize_t>(header.size())) return false;
  header.back() = static_cast<char>(checksumOf(input) >> 24U);
  cipher_.emplace(*password_);
  return write(header);
}

bool ZipWriter::deflateBytes(const char* bytes, unsigned count, int flush) {
  stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes));
  stream_.avail_in = count;
  int code = Z_OK;
  do {
    stream_.next_out = reinterpret_cast<Bytef*>(deflated_.data());
    stream_.avail_out = static_cast<uInt>(deflated_.size());
    code = deflate(&stream_, flush);
    if (code == Z_STREAM_ERROR || !write({deflated_.data(), deflated_.size() - stream_.avail_out}))
      return false;
  } while (stream_.avail_out == 0 && code != Z_STREAM_END);
  return true;
}

bool ZipWriter::writeContent(Input& input) {
  uLong checksum = 0;
  std::uint64_t size = 0;
  deflateReset(&stream_);
  const bool copied = input.read([&](const char* bytes, unsigned count) {
    checksum = crc32(checksum, reinterpret_cast<const Bytef*>(bytes), count);
    size += count;
    return deflateBytes(bytes, count, Z_NO_FLUSH);
  });
  const bool ended = copied && deflateBytes(nullptr, 0, Z_FINISH);
  return zipCloseFileInZipRaw64(file_, size, checksum) == ZIP_OK && ended;
}

Failure ZipWriter::add(const ProcessedFilePath& path) {
  if (path.fileName.empty() || path.fileName.size() > ZipLimits().nameBytes)
    return fail(fmt::format("The name {} is empty or too long.", shownName(path.fileName)));
  Input input(path.filePath);
  if (input.error() != 0) return failedOn(path.filePath, input.error());
  const bool added =
      openEntry(path.fileName, input) && (!password_ || writeCipherHeader(input)) && writeContent(input);
  if (input.error() != 0) return failedOn(path.filePath, input.error());
  if (added) return std::nullopt;
  return fail(
      fmt::format("Entry {} could not be written. Check that there is space.", shownName(path.fileName)));
}

std::uint64_t sizeOf(const ProcessedFilePath& path) {
  std::error_code failure;
  const auto size = fs::file_size(path.filePath, failure);
  return failure ? 0 : size;
}

Failure writeArchive(const fs::path& path, const std::vector<ProcessedFilePath>& files,
                     const std::optional<std::string>& password, ZipCompression compression,
                     const Zip::Progress& progress) {
  ZipWriter writer(path, password, compression);
  if (!writer.isOpen()) return fail("The archive could not be opened for writing.");
  std::uint64_t total = 0;
  for (const auto& file : files) total += sizeOf(file);
  std::uint64_t position = 0;
  for (const auto& file : files) {
    if (auto failure = writer.add(file)) return failure;
    position += sizeOf(file);
    if (progress && total > 0)
      progress(std::min(1.0, static_cast<double>(position) / static_cast<double>(total)));
  }
  if (!writer.close()) return fail("The archive could not be completed. Check that there is space.");
  return std::nullopt;
}

}  // namespace

std::optional<ZipError> Zip::zipFiles(const std::vector<fs::path>& paths, const fs::path& zipFilePath,
                                      const std::optional<std::string>& password, ZipCompression compression,
                                      const Progress& progress) {
  auto files = ZipUtilities::processZipPaths(paths);
  // An archive of the folder that it stands in does not hold its own former self.
  std::erase_if(files, [&](const ProcessedFilePath& file) {
    std::error_code failure;
    return fs::equivalent(file.filePath, zipFilePath, failure);
  });
  if (files.empty()) return fail("There are no files to put into the archive.");
  std::optional<Error> error;
  auto temporary = TemporaryFile::createBeside(zipFilePath, error);
  if (!temporary) return fail(error->localizedDescription());
  if (auto failure = writeArchive(temporary->path(), files, password, compression, progress)) return failure;
  if ((error = temporary->moveTo(zipFilePath))) return fail(error->localizedDescription());
  if (progress) progress(1.0);
  return std::nullopt;
}

std::optional<fs::path> Zip::quickZipFiles(const std::vector<fs::path>& paths, const std::string& fileName,
                                           const Progress& progress, std::optional<ZipError>& error) {
  const fs::path folder = paths.empty() ? fs::path() : paths.front().parent_path();
  fs::path archive = folder / (fileName + ".zip");
  error = zipFiles(paths, archive, std::nullopt, ZipCompression::defaultCompression, progress);
  if (error) return std::nullopt;
  return archive;
}

}  // namespace vantorium
