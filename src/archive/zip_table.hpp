#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "archive/archive_source.hpp"

namespace vantorium {

/// What the archive's table of contents claims about an entry.
struct ZipEntry {
  std::string name;  ///< as it is stored, at most as long as was asked for
  std::size_t nameBytes = 0;
  std::uint64_t compressedBytes = 0;
  std::uint64_t bytes = 0;
  std::uint64_t position = 0;  ///< of its header in the file
  std::uint32_t checksum = 0;
  std::uint32_t attributes = 0;  ///< external: for archives from Unix, the file's mode in the upper 16 bits
  std::uint16_t method = 0;      ///< how it is compressed
  bool isEncrypted = false;
  unsigned char passwordCheck = 0;  ///< what the last byte before the encrypted content must be
};

/// Reads an archive's table of contents, with sizes, offsets and counts of 64 bits. Debian's minizip misreads
/// those, and keeps where an entry is to itself. One thread at a time.
class ZipTable {
 public:
  /// Finds the table; see `flaw`. The source outlives the table.
  explicit ZipTable(const ArchiveSource& source);

  /// What is wrong with the archive, one sentence; empty while nothing is.
  const std::string& flaw() const { return flaw_; }
  /// How many entries `next` has not read; a claim of the archive.
  std::uint64_t rest() const { return rest_; }
  /// The next entry, with no more of its name than that. None at the end, and with `flaw` set when the table
  /// is damaged there.
  std::optional<ZipEntry> next(std::size_t longestName);

 private:
  bool find();
  std::optional<std::uint64_t> findEndRecord();
  bool readEndRecord(std::uint64_t position);
  bool readLargeEndRecord(std::uint64_t locator);
  bool place(std::uint64_t end, std::uint64_t offset, std::uint64_t size);
  void fail(std::string_view what);

  ArchiveWindow window_;
  std::uint64_t fileSize_;
  std::uint64_t shift_ = 0;  ///< bytes of something else before the archive: offsets do not count them
  std::uint64_t position_ = 0;
  std::uint64_t end_ = 0;
  std::uint64_t rest_ = 0;
  std::string flaw_;
};

/// A number of 1 to 8 bytes, the lowest first, as all of a zip archive; 0 where there are not so many bytes.
std::uint64_t littleEndian(std::string_view bytes, std::size_t at, std::size_t size);

}  // namespace vantorium
