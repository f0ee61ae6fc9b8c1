#pragma once

#include <minizip/unzip.h>
#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/archive_source.hpp"
#include "archive/traditional_cipher.hpp"

namespace vantorium {

/// What the archive's table of contents claims about an entry.
struct ZipEntry {
  std::string name;  ///< as it is stored, at most as long as was asked for
  std::size_t nameBytes = 0;
  std::uint64_t compressedBytes = 0;
  std::uint64_t bytes = 0;
  std::uint32_t checksum = 0;
  std::uint32_t attributes = 0;  ///< external: for archives from Unix, the file's mode in the upper 16 bits
  bool isEncrypted = false;
  unsigned char passwordCheck = 0;  ///< what the last byte before the encrypted content must be
};

/// Owns minizip's handle of an archive, and closes it at the end of its life. minizip finds the entries and
/// where their bytes are; they are decrypted and inflated here, because Debian's minizip can neither decrypt
/// nor read 64-bit sizes. The entry at hand is the one that `first` or `next` last arrived at. One thread at
/// a time.
class ZipReader {
 public:
  /// The source outlives the reader.
  ZipReader(ArchiveSource& source, std::uint64_t mostStoredBytes);
  ~ZipReader();
  ZipReader(const ZipReader&) = delete;
  ZipReader& operator=(const ZipReader&) = delete;

  enum class Step { entry, end, damaged };
  Step first();
  Step next();

  /// None when the table of contents is damaged there.
  std::optional<ZipEntry> entry(std::size_t longestName) const;

  /// Opens the entry at hand for reading. Returns null, or what is wrong with it.
  const char* openEntry(const ZipEntry& entry, const std::optional<std::string>& password);
  /// The next bytes of the open entry, empty at its end; none when it is damaged. They stay until the next
  /// call.
  std::optional<std::string_view> read();
  /// Of all that was read of the entry.
  std::uint32_t checksum() const { return checksum_; }
  void closeEntry();
  /// Whether a read was refused because the entries together have more stored bytes than may be read.
  bool isExhausted() const { return isExhausted_; }

 private:
  const char* readCipherHeader(const ZipEntry& entry);
  std::string_view readStored();
  std::optional<std::string_view> readDeflated();

  ArchiveSource& source_;
  unzFile file_;
  z_stream stream_{};
  std::uint64_t readable_;  ///< stored bytes of all entries that may still be read
  bool isExhausted_ = false;
  bool isDeflated_ = false;
  bool hasEnded_ = false;
  std::uint64_t position_ = 0;  ///< of the next stored byte
  std::uint64_t rest_ = 0;      ///< stored bytes that were not yet read
  std::uint32_t checksum_ = 0;
  std::optional<TraditionalCipher> cipher_;
  std::vector<char> decrypted_;
  // Large: whenever zlib returns, it copies the last 32 KiB aside.
  std::vector<char> inflated_ = std::vector<char>(262144);
};

}  // namespace vantorium
