// The functions of files and folders, as the C++ library, curl and the SDK call them.
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "torture/faults/faults.hpp"
#include "torture/faults/following.hpp"

namespace torture = vantorium::torture;
using torture::isBelowHome;
using torture::note;
using torture::shortens;
using torture::strikes;
using torture::Target;
using torture::targetOf;

namespace {

/// Opening takes a descriptor, making an inode besides.
bool openingStrikes(int folder, const char* path, int flags, const char* function) {
  if (!isBelowHome(folder, path)) return false;
  const int before = errno;
  const bool makes = (flags & O_CREAT) != 0 && faccessat(folder, path, F_OK, AT_SYMLINK_NOFOLLOW) != 0;
  errno = before;
  return strikes(makes ? torture::makeFile : torture::open, function);
}

int noteOpened(int descriptor, int folder, const char* path) {
  return note(descriptor, isBelowHome(folder, path) ? Target::file : Target::other);
}

mode_t modeOf(int flags, va_list arguments) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

bool isFile(int descriptor) { return targetOf(descriptor) == Target::file; }

}  // namespace

// NOLINTBEGIN(cert-dcl50-cpp,cppcoreguidelines-macro-usage): they stand in for functions of C
#define STANDS_IN_FOR_OPEN(name)                                     \
  int name(const char* path, int flags, ...) {                       \
    FOLLOWING(name);                                                 \
    va_list arguments;                                               \
    va_start(arguments, flags);                                      \
    const mode_t mode = modeOf(flags, arguments);                    \
    va_end(arguments);                                               \
    if (openingStrikes(AT_FDCWD, path, flags, #name)) return -1;     \
    return noteOpened(following(path, flags, mode), AT_FDCWD, path); \
  }
#define STANDS_IN_FOR_OPENAT(name)                                         \
  int name(int folder, const char* path, int flags, ...) {                 \
    FOLLOWING(name);                                                       \
    va_list arguments;                                                     \
    va_start(arguments, flags);                                            \
    const mode_t mode = modeOf(flags, arguments);                          \
    va_end(arguments);                                                     \
    if (openingStrikes(folder, path, flags, #name)) return -1;             \
    return noteOpened(following(folder, path, flags, mode), folder, path); \
  }
#define STANDS_IN_FOR_MKOSTEMP(name)                                       \
  int name(char* path, int flags) {                                        \
    FOLLOWING(name);                                                       \
    if (isBelowHome(path) && strikes(torture::makeFile, #name)) return -1; \
    return noteOpened(following(path, flags), AT_FDCWD, path);             \
  }
#define STANDS_IN_FOR_FOPEN(name)                                           \
  FILE* name(const char* path, const char* mode) {                          \
    FOLLOWING(name);                                                        \
    if (isBelowHome(path) && strikes(torture::open, #name)) return nullptr; \
    return following(path, mode);                                           \
  }
/// A function of the given operation, whose result is -1 when it fails.
#define STANDS_IN_FOR(operation, isOurs, name, parameters, arguments) \
  int name parameters noexcept {                                      \
    FOLLOWING(name);                                                  \
    if ((isOurs) && strikes(torture::operation, #name)) return -1;    \
    return following arguments;                                       \
  }

extern "C" {

STANDS_IN_FOR_OPEN(open)
STANDS_IN_FOR_OPEN(open64)
STANDS_IN_FOR_OPENAT(openat)
STANDS_IN_FOR_OPENAT(openat64)
STANDS_IN_FOR_MKOSTEMP(mkostemp)
STANDS_IN_FOR_MKOSTEMP(mkostemp64)
STANDS_IN_FOR_FOPEN(fopen)
STANDS_IN_FOR_FOPEN(fopen64)

STANDS_IN_FOR(makeFolder, isBelowHome(path), mkdir, (const char* path, mode_t mode), (path, mode))
STANDS_IN_FOR(makeFolder, isBelowHome(folder, path), mkdirat, (int folder, const char* path, mode_t mode),
              (folder, path, mode))
STANDS_IN_FOR(makeFolder, isBelowHome(path), symlink, (const char* target, const char* path), (target, path))
STANDS_IN_FOR(makeFolder, isBelowHome(path), link, (const char* from, const char* path), (from, path))
STANDS_IN_FOR(move, isBelowHome(to), rename, (const char* from, const char* to), (from, to))
STANDS_IN_FOR(move, isBelowHome(target, to), renameat,
              (int folder, const char* from, int target, const char* to), (folder, from, target, to))
STANDS_IN_FOR(change, isBelowHome(path), unlink, (const char* path), (path))
STANDS_IN_FOR(change, isBelowHome(folder, path), unlinkat, (int folder, const char* path, int flags),
              (folder, path, flags))
STANDS_IN_FOR(change, isBelowHome(path), remove, (const char* path), (path))
STANDS_IN_FOR(change, isBelowHome(path), rmdir, (const char* path), (path))
STANDS_IN_FOR(change, isFile(file), fchmod, (int file, mode_t mode), (file, mode))
STANDS_IN_FOR(write, isFile(file), ftruncate, (int file, off_t size), (file, size))
STANDS_IN_FOR(write, isFile(file), ftruncate64, (int file, off64_t size), (file, size))
STANDS_IN_FOR(lock, isFile(file), flock, (int file, int how), (file, how))
STANDS_IN_FOR(look, isFile(file), fstat, (int file, struct stat* facts), (file, facts))
STANDS_IN_FOR(look, isFile(file), fstat64, (int file, struct stat64* facts), (file, facts))
STANDS_IN_FOR(look, isBelowHome(path), stat, (const char* path, struct stat* facts), (path, facts))
STANDS_IN_FOR(look, isBelowHome(path), stat64, (const char* path, struct stat64* facts), (path, facts))
STANDS_IN_FOR(look, isBelowHome(path), lstat, (const char* path, struct stat* facts), (path, facts))
STANDS_IN_FOR(look, isBelowHome(path), lstat64, (const char* path, struct stat64* facts), (path, facts))

ssize_t pwrite(int file, const void* bytes, size_t size, off_t at) {
  FOLLOWING(pwrite);
  if (isFile(file) && strikes(torture::write, "pwrite")) return -1;
  return following(file, bytes, size, at);
}

ssize_t pread(int file, void* bytes, size_t size, off_t at) {
  FOLLOWING(pread);
  if (isFile(file) && strikes(torture::read, "pread")) return -1;
  return following(file, bytes,
                   isFile(file) && size > 1 && shortens(torture::read, "pread") ? size / 2 : size, at);
}

DIR* opendir(const char* path) {
  FOLLOWING(opendir);
  if (isBelowHome(path) && strikes(torture::open, "opendir")) return nullptr;
  DIR* const folder = following(path);
  if (folder != nullptr && isBelowHome(path)) note(dirfd(folder), Target::file);
  return folder;
}

struct dirent* readdir(DIR* folder) {
  FOLLOWING(readdir);
  if (isFile(dirfd(folder)) && strikes(torture::read, "readdir")) return nullptr;
  return following(folder);
}

int closedir(DIR* folder) {
  FOLLOWING(closedir);
  note(dirfd(folder), Target::other);
  return following(folder);
}

void* mmap(void* where, size_t size, int protection, int flags, int file, off_t at) noexcept {
  FOLLOWING(mmap);
  if (isFile(file) && strikes(torture::map, "mmap")) return MAP_FAILED;
  return following(where, size, protection, flags, file, at);
}

}  // extern "C"
// NOLINTEND(cert-dcl50-cpp,cppcoreguidelines-macro-usage)
