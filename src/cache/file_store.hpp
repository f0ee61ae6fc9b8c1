#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "cache/creative_shelf.hpp"
#include "cache/owned_folder.hpp"
#include "cache/stored_path.hpp"
#include "platform/foundation/device_information.hpp"

namespace vantorium {

/// The cache folder: this process's own, empty at the start, with nothing in it that nobody owns. Any thread.
class FileStore {
 public:
  static constexpr const char* folderName = "com.vantorium";

  /// `budget`: how many bytes of shown creatives are kept for sharing. What earlier processes left is removed
  /// on a worker.
  FileStore(const Directories& directories, std::uint64_t budget);
  FileStore(const FileStore&) = delete;
  FileStore& operator=(const FileStore&) = delete;

  const std::filesystem::path& root() const { return folder_.path(); }
  /// A new file or folder right below the root, not yet there. `name` is one that was never claimed before,
  /// and no path.
  std::shared_ptr<const StoredPath> claim(const std::string& name) const;
  /// What is shared, and what can be given up when the disk is full.
  CreativeShelf& shelf() { return shelf_; }
  /// Removes all files, and forgets what was kept for sharing. Whoever still owns a path has lost its file.
  void clear();

 private:
  void empty() const;

  const std::filesystem::path caches_;
  const OwnedFolder folder_;
  CreativeShelf shelf_;
};

}  // namespace vantorium
