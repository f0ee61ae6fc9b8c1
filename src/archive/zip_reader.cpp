#include "archive/zip_reader.hpp"

#include <isa-l/crc.h>

#include <algorithm>
#include <array>

namespace vantorium {

namespace {

constexpr std::size_t headerBytes = 30;
constexpr unsigned stored = 0;
constexpr unsigned deflated = 8;

/// What the library reads and writes; it leaves what it reads as it is.
std::uint8_t* bytesOf(const char* text) { return reinterpret_cast<std::uint8_t*>(const_cast<char*>(text)); }

}  // namespace

const char* ZipReader::openEntry(const ZipEntry& entry, const std::optional<std::string>& password) {
  const std::string_view header = window_.view(entry.position, headerBytes);
  if (header.size() < headerBytes || !header.starts_with("PK\3\4") ||
      littleEndian(header, 8, 2) != entry.method || littleEndian(header, 26, 2) != entry.nameBytes)
    return "is damaged: it is not where the table of contents has it";
  if (entry.method != stored && entry.method != deflated) return "is stored in an unknown way";
  isDeflated_ = entry.method == deflated;
  checksum_ = 0;
  position_ = entry.position + headerBytes + entry.nameBytes + littleEndian(header, 28, 2);
  rest_ = entry.compressedBytes;
  claimed_ = entry.bytes;
  isal_inflate_init(&stream_);
  cipher_.reset();
  if (!entry.isEncrypted) return nullptr;
  if (!password) return "is encrypted: a password is needed";
  cipher_.emplace(*password);
  return readCipherHeader(entry);
}

const char* ZipReader::readCipherHeader(const ZipEntry& entry) {
  std::array<char, TraditionalCipher::headerBytes> header{};
  const std::string_view bytes = window_.view(position_, header.size());
  if (rest_ < header.size() || bytes.size() < header.size()) return "is cut off";
  std::copy_n(bytes.begin(), header.size(), header.begin());
  position_ += header.size();
  rest_ -= header.size();
  cipher_->decrypt(header);
  const auto check = static_cast<unsigned char>(header.back());
  return check == entry.passwordCheck ? nullptr : "needs another password";
}

/// The next stored bytes, decrypted; empty when there are no more, or no more in the file.
std::string_view ZipReader::readStored() {
  if (rest_ == 0) return {};
  std::string_view bytes = window_.view(position_);
  bytes = bytes.substr(0, std::min<std::uint64_t>(bytes.size(), rest_));
  position_ += bytes.size();
  rest_ -= bytes.size();
  if (!cipher_) return bytes;
  decrypted_.assign(bytes.begin(), bytes.end());
  cipher_->decrypt(decrypted_);
  return {decrypted_.data(), decrypted_.size()};
}

std::optional<std::string_view> ZipReader::readDeflated() {
  const auto room = static_cast<std::uint32_t>(std::min<std::uint64_t>(inflated_.size() - 1, claimed_) + 1);
  stream_.next_out = bytesOf(inflated_.data());
  stream_.avail_out = room;
  while (stream_.block_state != ISAL_BLOCK_FINISH && stream_.avail_out > 0) {
    if (stream_.avail_in == 0) {
      // There may be none, and still something to come: the library holds back what had no room.
      const std::string_view bytes = readStored();
      stream_.next_in = bytesOf(bytes.data());
      stream_.avail_in = static_cast<std::uint32_t>(bytes.size());
    }
    const auto input = stream_.avail_in;
    const auto space = stream_.avail_out;
    if (isal_inflate(&stream_) != ISAL_DECOMP_OK) return std::nullopt;
    const bool hasMoved = stream_.avail_in != input || stream_.avail_out != space;
    if (!hasMoved && stream_.block_state != ISAL_BLOCK_FINISH) return std::nullopt;
  }
  return std::string_view(inflated_.data(), room - stream_.avail_out);
}

std::optional<std::string_view> ZipReader::read() {
  std::optional<std::string_view> bytes;
  if (isDeflated_) {
    bytes = readDeflated();
  } else if (bytes = readStored(); bytes->empty() && rest_ > 0) {
    return std::nullopt;
  }
  if (!bytes) return std::nullopt;
  checksum_ = crc32_gzip_refl(checksum_, bytesOf(bytes->data()), bytes->size());
  claimed_ -= std::min<std::uint64_t>(claimed_, bytes->size());
  return bytes;
}

}  // namespace vantorium
