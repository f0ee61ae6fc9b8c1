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
    : folder_(std::move(other.folder_)),
      name_(std::move(other.name_)),
      temporaryName_(std::move(other.temporaryName_)),
      descriptor_(std::exchange(other.descriptor_, -1)),
      isPending_(std::exchange(other.isPending_, false)) {}

ConfinedFile::~ConfinedFile() {
  if (isOpen()) ::close(descriptor_);
  if (isPending_) ::unlinkat(folder_->get(), (temporaryName_.empty() ? name_ : temporaryName_).c_str(), 0);
}

int ConfinedFile::open(const std::string& name) {
  descriptor_ = ::openat(folder_->get(), name.c_str(), newFileFlags, fileMode);
  isPending_ = isOpen();
  return isOpen() ? 0 : errno;
}

/// What stands in the file's place must be something that a file may take the place of.
int ConfinedFile::checkReplaced(const ArchiveSource& source) const {
  struct stat facts {};
  if (::fstatat(folder_->get(), name_.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0) return errno;
  if (S_ISDIR(facts.st_mode)) return EISDIR;
  return source.isFile(facts.st_dev, facts.st_ino) ? ETXTBSY : 0;
}

ConfinedFile ConfinedFile::make(const OpenFolder& folder, const std::string& name, Existing existing,
                                const ArchiveSource& source, int& error) {
  ConfinedFile file(folder, name);
  error = file.open(file.name_);
  if (error != EEXIST || existing == Existing::keep) return file;
  error = file.checkReplaced(source);
  if (error != 0) return file;
  do {
    file.temporaryName_ = temporaryName();
    error = file.open(file.temporaryName_);
  } while (error == EEXIST);
  return file;
}

int ConfinedFile::append(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

int ConfinedFile::setPermissions(mode_t mode) const { return ::fchmod(descriptor_, mode) == 0 ? 0 : errno; }

int ConfinedFile::keep() {
  // Some file systems find out only now that there is no space. Linux closes it when it was interrupted, too.
  if (::close(std::exchange(descriptor_, -1)) != 0 && errno != EINTR) return errno;
  const int folder = folder_->get();
  if (!temporaryName_.empty() && ::renameat(folder, temporaryName_.c_str(), folder, name_.c_str()) != 0)
    return errno;
  isPending_ = false;
  return 0;
}

ConfinedFolder::ConfinedFolder(const std::filesystem::path& path) {
  std::error_code failure;
  std::filesystem::create_directories(path, failure);
  FileDescriptor root(::open(path.empty() ? "." : path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!root.isOpen()) error_ = failure ? failure.value() : errno;
  root_ = std::make_shared<const FileDescriptor>(std::move(root));
  last_ = root_;
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

OpenFolder ConfinedFolder::makeFolder(const std::string& folder) {
  error_ = 0;
  if (last_ != nullptr && folder == lastPath_) return last_;
  last_ = nullptr;
  OpenFolder walk = root_;
  for (std::string_view rest = folder; !rest.empty();) {
    const std::string part(rest.substr(0, rest.find('/')));
    rest.remove_prefix(std::min(part.size() + 1, rest.size()));
    auto next = openOrMake(walk->get(), part);
    if (!next.isOpen()) {
      error_ = errno;
      return nullptr;
    }
    walk = std::make_shared<const FileDescriptor>(std::move(next));
  }
  lastPath_ = folder;
  last_ = walk;
  return walk;
}

int setPermissions(const OpenFolder& folder, mode_t mode) {
  return ::fchmod(folder->get(), mode) == 0 ? 0 : errno;
}

}  // namespace vantorium
