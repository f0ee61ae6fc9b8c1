#pragma once

#include <cstddef>
#include <cstdint>

namespace vantorium {

/// How much an archive may ask of the disk and of us. What its entries claim to have is added up before one
/// is begun, and an entry ends the work as soon as it has more than it claims: so the limits hold at any
/// moment, also while several entries are unpacked at a time.
struct ZipLimits {
  std::uint64_t entries = 10'000;
  std::uint64_t folders = 10'000;                    ///< that are made, those that no entry names included
  std::uint64_t totalBytes = 1024ULL * 1024 * 1024;  ///< of all files together, unpacked
  std::size_t nameBytes = 1024;                      ///< of an entry's name, with its folders
  /// Unpacked bytes for each byte of the archive on disk, all entries together: entries that share their
  /// data are counted as often as they are written. Deflate itself ends at 1032.
  std::uint64_t compressionRatio = 100;
  std::uint64_t ratioFreeBytes = 8ULL * 1024 * 1024;  ///< so many may be written whatever their ratio
  /// Bytes of the archive that may be read for each of its bytes: entries may share their data, and data that
  /// inflates to nothing takes its time all the same.
  std::uint64_t readRatio = 4;
};

/// Deeper trees serve no creative, and exhaust whoever walks or removes them.
inline constexpr int deepestZipFolder = 64;

}  // namespace vantorium
