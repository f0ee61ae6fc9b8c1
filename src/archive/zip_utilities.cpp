#include "archive/zip_utilities.hpp"

#include <algorithm>
#include <system_error>

namespace vantorium {

namespace fs = std::filesystem;

std::vector<ProcessedFilePath> ZipUtilities::processZipPaths(const std::vector<fs::path>& paths) {
  std::vector<ProcessedFilePath> files;
  for (const fs::path& path : paths) {
    std::error_code failure;
    if (fs::is_directory(path, failure)) {
      const auto inside = expandDirectoryFilePath(path);
      files.insert(files.end(), inside.begin(), inside.end());
    } else {
      files.push_back({path, path.filename().string()});
    }
  }
  return files;
}

std::vector<ProcessedFilePath> ZipUtilities::expandDirectoryFilePath(const fs::path& directory) {
  std::vector<ProcessedFilePath> files;
  std::error_code failure;
  const fs::path folder = directory.has_filename() ? directory : directory.parent_path();
  auto entry =
      fs::recursive_directory_iterator(folder, fs::directory_options::skip_permission_denied, failure);
  for (; !failure && entry != fs::recursive_directory_iterator(); entry.increment(failure)) {
    std::error_code unknown;
    if (!fs::is_regular_file(entry->symlink_status(unknown))) continue;
    const fs::path inside = folder.filename() / entry->path().lexically_relative(folder);
    files.push_back({entry->path(), inside.generic_string()});
  }
  std::ranges::sort(files, {}, &ProcessedFilePath::fileName);
  return files;
}

}  // namespace vantorium
