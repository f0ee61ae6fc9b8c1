#pragma once

#include <isa-l/igzip_lib.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/archive_source.hpp"
#include "archive/traditional_cipher.hpp"
#include "archive/zip_table.hpp"

namespace vantorium {

/// Reads the content of entries: finds, decrypts and inflates it, one entry after the other, in memory that
/// does not grow with them. One thread at a time.
class ZipReader {
 public:
  /// The source outlives the reader.
  explicit ZipReader(const ArchiveSource& source) : window_(source) {}

  /// Opens an entry for reading, in place of the one before. Returns null, or what is wrong with it.
  const char* openEntry(const ZipEntry& entry, const std::optional<std::string>& password);
  /// The next bytes of the open entry, empty at its end; none when it is damaged or cannot be read. At most
  /// one byte more than the entry claims to have, all in all. They stay until the next call.
  std::optional<std::string_view> read();
  /// Of all that was read of the entry.
  std::uint32_t checksum() const { return checksum_; }
  /// Why the file could not be read, an `errno` value, or 0.
  int error() const { return window_.error(); }

 private:
  const char* readCipherHeader(const ZipEntry& entry);
  std::string_view readStored();
  std::optional<std::string_view> readDeflated();

  ArchiveWindow window_;
  bool isDeflated_ = false;
  std::uint64_t position_ = 0;  ///< of the next stored byte
  std::uint64_t rest_ = 0;      ///< stored bytes that were not yet read
  std::uint64_t claimed_ = 0;   ///< bytes that the entry still claims to have
  std::uint32_t checksum_ = 0;
  std::optional<TraditionalCipher> cipher_;
  std::vector<char> decrypted_;
  inflate_state stream_{};
  std::vector<char> inflated_ = std::vector<char>(262144);
};

}  // namespace vantorium
