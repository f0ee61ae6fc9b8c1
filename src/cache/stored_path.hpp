#pragma once

#include <atomic>
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
  /// What is there could not be shown, so that nothing that has it is ready.
  void distrust() const { isTrusted_ = false; }
  bool isTrusted() const { return isTrusted_; }

 private:
  const std::string path_;
  mutable std::atomic<bool> isTrusted_ = true;
};

}  // namespace vantorium
