#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vantorium {

/// A file, and its name inside the archive.
struct ProcessedFilePath {
  std::filesystem::path filePath;
  std::string fileName;
};

/// What is to be zipped, and under which names. Any thread.
class ZipUtilities {
 public:
  /// A file gets its own name; a folder is replaced by the files in it. A path at which there is nothing is
  /// taken for a file: opening it fails.
  static std::vector<ProcessedFilePath> processZipPaths(const std::vector<std::filesystem::path>& paths);
  /// The regular files in the folder and the folders in it, sorted by their names, which start with the
  /// folder's. Symbolic links in it are left out, as are folders that cannot be read.
  static std::vector<ProcessedFilePath> expandDirectoryFilePath(const std::filesystem::path& directory);
};

}  // namespace vantorium
