#include "archive/confined_folder.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include "platform/foundation/temporary_file.hpp"

namespace vantorium {

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr int newFileFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
constexpr mode_t fileMode = 0666;  // less what the process's mask takes
constexpr mode_t folderMode = 0777;

/// Another one at each call, and not one that an archive could foresee and occupy for long.
std::string temporaryName() {
  static std::atomic<unsigned> number{0};
  return fmt::format("{}{}-{}", TemporaryFile::hiddenPrefix, ::getpid(), number++);
}

}  // namespace

ConfinedFile::ConfinedFile(ConfinedFile&& other) noexcept
    : file_(std::move(other.file_)),
      folder_(other.folder_),
      name_(std::move(other.name_)),
      temporaryName_(std::move(other.temporaryName_)) {}

ConfinedFile::~ConfinedFile() {
  if (!isOpen()) return;
  const std::string& name = temporaryName_.empty() ? name_ : temporaryName_;
  ::unlinkat(folder_, name.c_str(), 0);
}

int ConfinedFile::append(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file_.get(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

int ConfinedFile::setPermissions(mode_t mode) const { return ::fchmod(file_.get(), mode) == 0 ? 0 : errno; }

int ConfinedFile::keep() {
  if (!temporaryName_.empty() && ::renameat(folder_, temporaryName_.c_str(), folder_, name_.c_str()) != 0) {
    return errno;
  }
  file_ = FileDescriptor();
  return 0;
}

ConfinedFolder::ConfinedFolder(const std::filesystem::path& path) {
  std::error_code failure;
  std::filesystem::create_directories(path, failure);
  root_ = FileDescriptor(::open(path.empty() ? "." : path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!root_.isOpen()) error_ = failure ? failure.value() : errno;
}

FileDescriptor ConfinedFolder::openOrMake(int parent, const std::string& name) {
  FileDescriptor folder(::openat(parent, name.c_str(), folderFlags));
  if (folder.isOpen() || errno != ENOENT) return folder;
  if (::mkdirat(parent, name.c_str(), folderMode) == 0) {
    ++foldersMade_;
  } else if (errno != EEXIST) {
    return folder;
  }
  return FileDescriptor(::openat(parent, name.c_str(), folderFlags));
}

bool ConfinedFolder::makeFolder(const std::string& folder) {
  error_ = 0;
  if (folder == folderPath_) return true;
  // Not kept while the walk may fail: it would be taken for the folder that is asked for next.
  folderPath_.clear();
  folder_ = FileDescriptor();
  FileDescriptor walk;
  for (std::string_view rest = folder; !rest.empty();) {
    const std::string part(rest.substr(0, rest.find('/')));
    rest.remove_prefix(std::min(part.size() + 1, rest.size()));
    walk = openOrMake(walk.isOpen() ? walk.get() : root_.get(), part);
    if (!walk.isOpen()) {
      error_ = errno;
      return false;
    }
  }
  folder_ = std::move(walk);
  folderPath_ = folder;
  return true;
}

int ConfinedFolder::setFolderPermissions(mode_t mode) const {
  return !folder_.isOpen() || ::fchmod(folder_.get(), mode) == 0 ? 0 : errno;
}

bool ConfinedFolder::mayReplace(const std::string& name, const ArchiveSource& source) {
  struct stat facts {};
  if (::fstatat(current(), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0) {
    error_ = errno;
  } else if (S_ISDIR(facts.st_mode)) {
    error_ = EISDIR;
  } else if (source.isFile(facts.st_dev, facts.st_ino)) {
    error_ = ETXTBSY;
  }
  return error_ == 0;
}

ConfinedFile ConfinedFolder::makeFile(const EntryPath& path, Existing existing, const ArchiveSource& source) {
  ConfinedFile file;
  if (!makeFolder(path.folder)) return file;
  file.folder_ = current();
  file.name_ = path.name;
  file.file_ = FileDescriptor(::openat(current(), path.name.c_str(), newFileFlags, fileMode));
  error_ = file.isOpen() ? 0 : errno;
  if (error_ != EEXIST || existing == Existing::keep) return file;
  error_ = 0;
  if (!mayReplace(path.name, source)) return file;
  do {
    file.temporaryName_ = temporaryName();
    file.file_ = FileDescriptor(::openat(current(), file.temporaryName_.c_str(), newFileFlags, fileMode));
    error_ = file.isOpen() ? 0 : errno;
  } while (error_ == EEXIST);
  return file;
}

}  // namespace vantorium
