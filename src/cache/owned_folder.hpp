#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "cache/folder_lock.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

/// A folder that one process owns as long as it lives. Of several processes that ask for the same one the
/// first gets it, the others get one beside it with a name of its own, which goes with them. The lock on a
/// folder is a file beside it, "<folder>.lock". Any thread.
class OwnedFolder {
 public:
  /// Takes `parent`/`name`, or a folder beside it. Never waits for anything but the disk. Where no lock can
  /// be made (no descriptor is left, say) the folder is one beside, too, which `own` may take later.
  OwnedFolder(const std::filesystem::path& parent, const std::string& name);
  /// Has a folder beside removed, on a worker. One that has its own name stays for the next owner to empty.
  ~OwnedFolder();
  OwnedFolder(const OwnedFolder&) = delete;
  OwnedFolder& operator=(const OwnedFolder&) = delete;

  /// It need not exist.
  const std::filesystem::path& path() const { return path_; }
  /// To be called before anything is made in the folder: takes it unless it has been taken.
  void own() const EXCLUDES(mutex_);
  /// Leaves nothing under the folder's name. What was there is moved aside; `collect` removes it.
  void empty() const;
  /// Removes what was moved aside of any folder `parent`/`name` or beside it, and those whose owners are
  /// dead, but for one. Takes its time.
  static void collect(const std::filesystem::path& parent, const std::string& name,
                      const std::filesystem::path& exceptFor);

 private:
  bool take() const REQUIRES(mutex_);

  std::filesystem::path path_;
  bool isBeside_ = false;
  mutable Mutex mutex_;
  mutable std::shared_ptr<FolderLock> lock_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
