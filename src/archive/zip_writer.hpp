#pragma once

#include <minizip/zip.h>
#include <zlib.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "archive/traditional_cipher.hpp"
#include "archive/zip.hpp"
#include "archive/zip_utilities.hpp"

namespace vantorium {

class ZipInput;

/// Owns minizip's handle of a new archive, and closes it at the end of its life. minizip is handed what zlib
/// deflates here, for it cannot encrypt. One thread at a time.
class ZipWriter {
 public:
  /// Empties the file at `path`. The password outlives the writer.
  ZipWriter(const std::filesystem::path& path, const std::optional<std::string>& password,
            ZipCompression compression);
  ~ZipWriter();
  ZipWriter(const ZipWriter&) = delete;
  ZipWriter& operator=(const ZipWriter&) = delete;

  bool isOpen() const { return file_ != nullptr && isReady_; }
  /// Returns the failure; the archive is then of no use.
  std::optional<ZipError> add(const ProcessedFilePath& path);
  /// Writes the table of contents; false when it could not.
  bool close();

 private:
  bool openEntry(const std::string& name, ZipInput& input);
  bool writeCipherHeader(ZipInput& input);
  bool writeContent(ZipInput& input);
  bool deflateBytes(const char* bytes, unsigned count, int flush);
  bool write(std::span<char> bytes);

  zipFile file_;
  const std::optional<std::string>& password_;
  std::optional<TraditionalCipher> cipher_;
  z_stream stream_{};
  bool isReady_ = false;
  std::array<char, 65536> deflated_;
};

}  // namespace vantorium
