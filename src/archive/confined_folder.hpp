#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "archive/archive_source.hpp"
#include "archive/entry_path.hpp"
#include "platform/foundation/file_descriptor.hpp"

namespace vantorium {

/// A new file on its way into a folder. It is written under its own name when that is free, else under a
/// hidden one until it takes the place of what stands there. Gone at the end of its life unless it was kept.
class ConfinedFile {
 public:
  ConfinedFile() = default;
  ConfinedFile(ConfinedFile&& other) noexcept;
  ConfinedFile& operator=(ConfinedFile&& other) = delete;
  ~ConfinedFile();

  bool isOpen() const { return file_.isOpen(); }
  /// The calls below return 0 or why they failed, an `errno` value.
  int append(std::string_view bytes) const;
  int setPermissions(mode_t mode) const;
  int keep();

 private:
  friend class ConfinedFolder;
  FileDescriptor file_;
  int folder_ = -1;  ///< borrowed; where the names are
  std::string name_;
  std::string temporaryName_;
};

/// Makes folders and files below one folder and nowhere else: each step goes from an open folder to a name in
/// it, and none goes through a symbolic link. One thread at a time.
class ConfinedFolder {
 public:
  /// Opens the folder, making it and its parents if it is not there; see `isOpen`. Links in this path are the
  /// caller's and are followed.
  explicit ConfinedFolder(const std::filesystem::path& path);

  bool isOpen() const { return root_.isOpen(); }
  /// Why the last call could not do what it was asked for, an `errno` value, or 0.
  int error() const { return error_; }
  /// How many folders were made so far.
  std::uint64_t foldersMade() const { return foldersMade_; }

  /// Makes the folder and those above it, as far as they are not there. False when something else is.
  bool makeFolder(const std::string& folder);
  /// Of a folder below this one, which `makeFolder` made last. Returns 0 or an `errno` value.
  int setFolderPermissions(mode_t mode) const;

  enum class Existing { keep, replace };
  /// Opens a new file; its folder is made. Not open when there is one to keep (`error` is then EEXIST), when
  /// `source` itself would be replaced (ETXTBSY), or when it cannot be made. At most one file is open at a
  /// time, and none outlives this folder.
  ConfinedFile makeFile(const EntryPath& path, Existing existing, const ArchiveSource& source);

 private:
  FileDescriptor openOrMake(int parent, const std::string& name);
  int current() const { return folder_.isOpen() ? folder_.get() : root_.get(); }
  bool mayReplace(const std::string& name, const ArchiveSource& source);

  FileDescriptor root_;
  FileDescriptor folder_;   ///< the last one that was asked for; not open for the root
  std::string folderPath_;  ///< its path
  int error_ = 0;
  std::uint64_t foldersMade_ = 0;
};

}  // namespace vantorium
