#pragma once

#include <minizip/unzip.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "archive/archive_source.hpp"

namespace vantorium {

/// What the archive's table of contents claims about an entry.
struct ZipEntry {
  std::string name;  ///< as it is stored, at most as long as was asked for
  std::size_t nameBytes = 0;
  std::uint64_t compressedBytes = 0;
  std::uint64_t bytes = 0;
  std::uint32_t attributes = 0;  ///< external: for archives from Unix, the file's mode in the upper 16 bits
  bool isEncrypted = false;
};

/// Owns minizip's handle of an archive, and closes it at the end of its life. The entry at hand is the one
/// that `first` or `next` last arrived at. One thread at a time.
class ZipReader {
 public:
  /// The source outlives the reader.
  explicit ZipReader(ArchiveSource& source);
  ~ZipReader();
  ZipReader(const ZipReader&) = delete;
  ZipReader& operator=(const ZipReader&) = delete;

  enum class Step { entry, end, damaged };
  Step first();
  Step next();

  /// None when the table of contents is damaged there.
  std::optional<ZipEntry> entry(std::size_t longestName) const;

  /// Opens the entry at hand for reading; false when it is damaged or stored in a way that is not supported.
  bool openEntry(const ZipEntry& entry, const std::optional<std::string>& password);
  /// The next bytes of the open entry: their number, 0 at its end, negative when it is damaged.
  int read(std::span<char> bytes);
  enum class Close { sound, wrongChecksum, damaged };
  Close closeEntry();

 private:
  unzFile file_;
};

}  // namespace vantorium
