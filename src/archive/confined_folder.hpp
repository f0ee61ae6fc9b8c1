#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "archive/archive_source.hpp"
#include "platform/foundation/file_descriptor.hpp"

namespace vantorium {

/// An open folder, which stays open while somebody works in it. Any thread.
using OpenFolder = std::shared_ptr<const FileDescriptor>;

/// A new file on its way into a folder. It is written under its own name when that is free, else under a
/// hidden one until it takes the place of what stands there. Gone at the end of its life unless it was kept.
/// One thread at a time; several may each make theirs in one folder.
class ConfinedFile {
 public:
  enum class Existing { keep, replace };
  /// Opens a new file. Not open, with `error` set to an `errno` value, when there is one to keep (EEXIST),
  /// when `source` itself would be replaced (ETXTBSY), or when it cannot be made.
  static ConfinedFile make(const OpenFolder& folder, const std::string& name, Existing existing,
                           const ArchiveSource& source, int& error);
  ConfinedFile(ConfinedFile&& other) noexcept;
  ConfinedFile& operator=(ConfinedFile&& other) = delete;
  ~ConfinedFile();

  bool isOpen() const { return descriptor_ >= 0; }
  /// The calls below return 0 or why they failed, an `errno` value.
  int append(std::string_view bytes) const;
  int setPermissions(mode_t mode) const;
  /// Closes it, and only if its bytes got where they belong leaves it there.
  int keep();

 private:
  ConfinedFile(OpenFolder folder, std::string name) : folder_(std::move(folder)), name_(std::move(name)) {}
  int open(const std::string& name);
  int checkReplaced(const ArchiveSource& source) const;

  OpenFolder folder_;
  std::string name_;
  std::string temporaryName_;
  int descriptor_ = -1;
  bool isPending_ = false;  ///< there is a file that nobody has kept
};

/// Makes folders below one folder and nowhere else: each step goes from an open folder to a name in it, and
/// none goes through a symbolic link. One thread at a time.
class ConfinedFolder {
 public:
  /// Opens the folder, making it and its parents if it is not there; see `isOpen`. Links in this path are the
  /// caller's and are followed.
  explicit ConfinedFolder(const std::filesystem::path& path);

  bool isOpen() const { return root_->isOpen(); }
  /// Why the last call could not do what it was asked for, an `errno` value, or 0.
  int error() const { return error_; }
  /// How many folders were made so far.
  std::uint64_t foldersMade() const { return foldersMade_; }

  /// Makes the folder and those above it, as far as they are not there, and opens it. None, with `error` set,
  /// when something else is there or it cannot be made.
  OpenFolder makeFolder(const std::string& folder);

 private:
  FileDescriptor openOrMake(int parent, const std::string& name);

  OpenFolder root_;
  OpenFolder last_;       ///< the one that was asked for last; none when it could not be made
  std::string lastPath_;  ///< its path
  int error_ = 0;
  std::uint64_t foldersMade_ = 0;
};

/// Of an open folder. Returns 0 or why it failed, an `errno` value.
int setPermissions(const OpenFolder& folder, mode_t mode);

}  // namespace vantorium
