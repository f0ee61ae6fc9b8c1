#include "archive/zip_writer.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <utility>

#include "archive/entry_path.hpp"
#include "platform/foundation/file_descriptor.hpp"
#include "platform/foundation/files.hpp"

namespace vantorium {

namespace {

constexpr std::size_t bufferBytes = 65536;
constexpr uLong madeOnUnix = (3U << 8U) | 30U;
constexpr uLong encrypted = 1;
constexpr uLong nameIsUTF8 = 1U << 11U;
constexpr std::uint64_t largestPlainFile = 0xF0000000;  // room for what does not compress

ZipError failure(std::string detail) { return ZipError(ZipError::zipFail, std::move(detail)); }

}  // namespace

/// One file that is read from its start to its end, possibly more than once.
class ZipInput {
 public:
  explicit ZipInput(const std::filesystem::path& path)
      : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
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

namespace {

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

uLong checksumOf(ZipInput& input) {
  uLong checksum = 0;
  input.read([&](const char* bytes, unsigned count) {
    checksum = crc32(checksum, reinterpret_cast<const Bytef*>(bytes), count);
    return true;
  });
  return checksum;
}

}  // namespace

ZipWriter::ZipWriter(const std::filesystem::path& path, const std::optional<std::string>& password,
                     ZipCompression compression)
    : file_(zipOpen64(path.c_str(), APPEND_STATUS_CREATE)), password_(password) {
  isReady_ = deflateInit2(&stream_, static_cast<int>(compression), Z_DEFLATED, -MAX_WBITS, DEF_MEM_LEVEL,
                          Z_DEFAULT_STRATEGY) == Z_OK;
}

ZipWriter::~ZipWriter() {
  deflateEnd(&stream_);
  close();
}

bool ZipWriter::close() {
  return file_ == nullptr || zipClose(std::exchange(file_, nullptr), nullptr) == ZIP_OK;
}

bool ZipWriter::openEntry(const std::string& name, ZipInput& input) {
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

bool ZipWriter::writeCipherHeader(ZipInput& input) {
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

bool ZipWriter::writeContent(ZipInput& input) {
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

std::optional<ZipError> ZipWriter::add(const ProcessedFilePath& path) {
  if (path.fileName.empty() || path.fileName.size() > ZipLimits().nameBytes)
    return failure(fmt::format("The name {} is empty or too long.", shownName(path.fileName)));
  ZipInput input(path.filePath);
  if (input.error() != 0)
    return failure(posixError(input.error(), "read", path.filePath).localizedDescription());
  errno = 0;
  const bool added =
      openEntry(path.fileName, input) && (!password_ || writeCipherHeader(input)) && writeContent(input);
  const int code = errno == 0 ? EIO : errno;
  if (input.error() != 0)
    return failure(posixError(input.error(), "read", path.filePath).localizedDescription());
  if (added) return std::nullopt;
  return failure(
      fmt::format("Entry {} could not be written: {}.", shownName(path.fileName), writingFailure(code)));
}

}  // namespace vantorium
