#pragma once

#include <filesystem>
#include <string>

namespace vantorium {

/// A file or folder of the cache, and whoever shares it: it is removed when the last owner's reference goes,
/// on a worker. It need not exist yet. Any thread.
class StoredPath {
 public:
  explicit StoredPath(const std::filesystem::path& path) : path_(path.string()) {}
  StoredPath(const StoredPath&) = delete;
  StoredPath& operator=(const StoredPath&) = delete;
  ~StoredPath();

  /// Absolute.
  const std::string& path() const { return path_; }
  /// Removes it here and now: for when its space is needed at once.
  void remove() const;

 private:
  const std::string path_;
};

}  // namespace vantorium
