#include "archive/zip_reader.hpp"

#include <algorithm>
#include <array>

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

ZipReader::ZipReader(ArchiveSource& source, std::uint64_t mostStoredBytes)
    : source_(source), readable_(mostStoredBytes) {
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
  cipher_.emplace(*password);
  return readCipherHeader(entry);
}

const char* ZipReader::readCipherHeader(const ZipEntry& entry) {
  std::array<char, TraditionalCipher::headerBytes> header{};
  if (rest_ < header.size() || source_.read(position_, header) < header.size()) return "is cut off";
  position_ += header.size();
  rest_ -= header.size();
  cipher_->decrypt(header);
  const auto check = static_cast<unsigned char>(header.back());
  return check == entry.passwordCheck ? nullptr : "needs another password";
}

/// The next stored bytes, decrypted; empty when there are no more, or no more in the file.
std::string_view ZipReader::readStored() {
  if (rest_ == 0) return {};
  std::string_view bytes = source_.view(position_);
  bytes = bytes.substr(0, std::min<std::uint64_t>(bytes.size(), rest_));
  isExhausted_ = bytes.size() > readable_;
  if (isExhausted_) return {};
  readable_ -= bytes.size();
  position_ += bytes.size();
  rest_ -= bytes.size();
  if (!cipher_) return bytes;
  decrypted_.assign(bytes.begin(), bytes.end());
  cipher_->decrypt(decrypted_);
  return {decrypted_.data(), decrypted_.size()};
}

std::optional<std::string_view> ZipReader::readDeflated() {
  stream_.next_out = reinterpret_cast<Bytef*>(inflated_.data());
  stream_.avail_out = static_cast<uInt>(inflated_.size());
  while (!hasEnded_ && stream_.avail_out > 0) {
    if (stream_.avail_in == 0) {
      const std::string_view bytes = readStored();
      if (bytes.empty()) return std::nullopt;
      stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
      stream_.avail_in = static_cast<uInt>(bytes.size());
    }
    const int code = inflate(&stream_, Z_NO_FLUSH);
    hasEnded_ = code == Z_STREAM_END;
    if (!hasEnded_ && code != Z_OK) return std::nullopt;
  }
  return std::string_view(inflated_.data(), inflated_.size() - stream_.avail_out);
}

std::optional<std::string_view> ZipReader::read() {
  std::optional<std::string_view> bytes;
  if (isDeflated_) {
    bytes = readDeflated();
  } else if (bytes = readStored(); bytes->empty() && rest_ > 0) {
    return std::nullopt;
  }
  if (bytes && !bytes->empty()) {  // zlib starts anew for no bytes
    checksum_ = static_cast<std::uint32_t>(
        crc32(checksum_, reinterpret_cast<const Bytef*>(bytes->data()), static_cast<uInt>(bytes->size())));
  }
  return bytes;
}

void ZipReader::closeEntry() { unzCloseCurrentFile(file_); }

}  // namespace vantorium
