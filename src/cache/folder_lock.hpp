#pragma once

#include <sys/file.h>

#include <filesystem>
#include <optional>
#include <utility>

#include "platform/foundation/file_descriptor.hpp"

namespace vantorium {

/// Says that this process owns something, by a file that the other processes of the application look at. Held
/// as long as the object lives; a process that dies, however, holds none. One thread at a time.
class FolderLock {
 public:
  /// As the system's `flock` does.
  using LockFile = int (*)(int descriptor, int operation);

  /// Takes the lock that `file` stands for: the system's lock on it, or where the file system has none a mark
  /// in it. With a mark the file exists as long as it is held, and says which process of which start of which
  /// machine made it. The file is made unless it is there, in a folder that is. None when another holder
  /// lives or when the file cannot be made. Never waits.
  static std::optional<FolderLock> take(const std::filesystem::path& file, LockFile lock = &::flock);

  FolderLock(FolderLock&& other) noexcept { *this = std::move(other); }
  FolderLock& operator=(FolderLock&& other) noexcept {
    std::swap(file_, other.file_);
    std::swap(mark_, other.mark_);
    return *this;
  }
  ~FolderLock();

 private:
  static std::optional<FolderLock> mark(FileDescriptor file, const std::filesystem::path& path);
  FolderLock(FileDescriptor file, std::filesystem::path mark)
      : file_(std::move(file)), mark_(std::move(mark)) {}

  FileDescriptor file_;
  std::filesystem::path mark_;  ///< removed at the end; empty when the system holds the lock
};

}  // namespace vantorium
