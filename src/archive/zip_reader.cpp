#include "archive/zip_reader.hpp"

#include <algorithm>

namespace vantorium {

namespace {

constexpr std::uint64_t isInExtraField = 0xFFFFFFFF;
constexpr unsigned encrypted = 1;
constexpr unsigned checksumFollows = 8;

ZipReader::Step stepOf(int code) {
  if (code == UNZ_OK) return ZipReader::Step::entry;
  return code == UNZ_END_OF_LIST_OF_FILE ? ZipReader::Step::end : ZipReader::Step::damaged;
}

std::uint64_t littleEndian(std::string_view bytes) {
  std::uint64_t value = 0;
  for (std::size_t at = bytes.size(); at > 0; --at)
    value = value << 8U | static_cast<unsigned char>(bytes[at - 1]);
  return value;
}

/// The 64-bit sizes of the extra field; sizes that it does not have stay.
void readLargeSizes(ZipEntry& entry, std::string_view extra) {
  while (extra.size() >= 4) {
    const auto kind = littleEndian(extra.substr(0, 2));
    std::string_view field = extra.substr(4, littleEndian(extra.substr(2, 2)));
    extra.remove_prefix(4 + field.size());
    if (kind != 1) continue;
    for (std::uint64_t* const size : {&entry.bytes, &entry.compressedBytes}) {
      if (*size != isInExtraField || field.size() < 8) continue;
      *size = littleEndian(field.substr(0, 8));
      field.remove_prefix(8);
    }
    return;
  }
}

}  // namespace

ZipReader::ZipReader(ArchiveSource& source) : source_(source) {
  zlib_filefunc64_def functions = source.functions();
  file_ = unzOpen2_64("", &functions);
  if (inflateInit2(&stream_, -MAX_WBITS) == Z_OK || file_ == nullptr) return;
  unzClose(file_);
  file_ = nullptr;
}

ZipReader::~ZipReader() {
  inflateEnd(&stream_);
  if (file_ != nullptr) unzClose(file_);
}

// minizip itself refuses a null handle.
ZipReader::Step ZipReader::first() { return stepOf(unzGoToFirstFile(file_)); }

ZipReader::Step ZipReader::next() { return stepOf(unzGoToNextFile(file_)); }

std::optional<ZipEntry> ZipReader::entry(std::size_t longestName) const {
  unz_file_info64 info{};
  std::string name(longestName, '\0');
  if (unzGetCurrentFileInfo64(file_, &info, name.data(), name.size(), nullptr, 0, nullptr, 0) != UNZ_OK)
    return std::nullopt;
  name.resize(std::min<std::size_t>(name.size(), info.size_filename));
  const uLong check = (info.flag & checksumFollows) != 0 ? info.dosDate >> 8U : info.crc >> 24U;
  ZipEntry entry{.name = std::move(name),
                 .nameBytes = info.size_filename,
                 .compressedBytes = info.compressed_size,
                 .bytes = info.uncompressed_size,
                 .checksum = static_cast<std::uint32_t>(info.crc),
                 .attributes = static_cast<std::uint32_t>(info.external_fa),
                 .isEncrypted = (info.flag & encrypted) != 0,
                 .passwordCheck = static_cast<unsigned char>(check)};
  if (entry.bytes != isInExtraField && entry.compressedBytes != isInExtraField) return entry;
  std::string extra(info.size_file_extra, '\0');
  if (unzGetCurrentFileInfo64(file_, nullptr, nullptr, 0, extra.data(), extra.size(), nullptr, 0) != UNZ_OK)
    return std::nullopt;
  readLargeSizes(entry, extra);
  return entry;
}

const char* ZipReader::openEntry(const ZipEntry& entry, const std::optional<std::string>& password) {
  int method = 0;
  if (unzOpenCurrentFile2(file_, &method, nullptr, 1) != UNZ_OK || (method != 0 && method != Z_DEFLATED))
    return "is damaged, or stored in an unknown way";
  isDeflated_ = method == Z_DEFLATED;
  hasEnded_ = false;
  checksum_ = 0;
  position_ = unzGetCurrentFileZStreamPos64(file_);
  rest_ = entry.compressedBytes;
  inflateReset(&stream_);
  stream_.avail_in = 0;
  cipher_.reset();
  if (!entry.isEncrypted) return nullptr;
  if (!password) return "is encrypted: a password is needed";
  std::array<char, TraditionalCipher::headerBytes> header{};
  cipher_.emplace(*password);
  if (readStored(header) != static_cast<long>(header.size())) return "is cut off";
  return static_cast<unsigned char>(header.back()) == entry.passwordCheck ? nullptr
                                                                          : "needs another password";
}

long ZipReader::readStored(std::span<char> bytes) {
  const auto wanted = bytes.first(std::min<std::uint64_t>(bytes.size(), rest_));
  if (source_.read(position_, wanted) < wanted.size()) return -1;
  position_ += wanted.size();
  rest_ -= wanted.size();
  if (cipher_) cipher_->decrypt(wanted);
  return static_cast<long>(wanted.size());
}

long ZipReader::readDeflated(std::span<char> bytes) {
  stream_.next_out = reinterpret_cast<Bytef*>(bytes.data());
  stream_.avail_out = static_cast<uInt>(bytes.size());
  while (!hasEnded_ && stream_.avail_out > 0) {
    if (stream_.avail_in == 0) {
      const long count = readStored(stored_);
      if (count <= 0) return -1;
      stream_.next_in = reinterpret_cast<Bytef*>(stored_.data());
      stream_.avail_in = static_cast<uInt>(count);
    }
    const int code = inflate(&stream_, Z_NO_FLUSH);
    hasEnded_ = code == Z_STREAM_END;
    if (!hasEnded_ && code != Z_OK) return -1;
  }
  return static_cast<long>(bytes.size() - stream_.avail_out);
}

long ZipReader::read(std::span<char> bytes) {
  const long count = isDeflated_ ? readDeflated(bytes) : readStored(bytes);
  if (count > 0)
    checksum_ = static_cast<std::uint32_t>(
        crc32(checksum_, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(count)));
  return count;
}

void ZipReader::closeEntry() { unzCloseCurrentFile(file_); }

}  // namespace vantorium
