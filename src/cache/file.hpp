#pragma once

#include <memory>
#include <optional>
#include <string>

#include <vantorium/error.hpp>

namespace vantorium {

/// One requested download. Written by the download's thread until its batch has ended, only read after that.
struct File {
  explicit File(std::string source) : sourcePath(std::move(source)) {}

  bool isDownloaded = false;                   ///< true once the bytes are at `destinationPath`
  std::optional<Error> error;                  ///< why it could not be fetched; none for a failed write
  const std::string sourcePath;                ///< the requested URL, unchanged
  std::optional<std::string> destinationPath;  ///< absolute
};

}  // namespace vantorium
