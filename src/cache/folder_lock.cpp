#include "cache/folder_lock.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>

#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"

namespace vantorium {

namespace fs = std::filesystem;

namespace {

constexpr int lockFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW;
/// Whoever collects dead owners may remove the file between its opening and its locking.
constexpr int attempts = 5;
/// A mark is written as soon as it is made. An empty one of that age was left by a process that was killed.
constexpr std::chrono::minutes emptyMarkIsDeadAfter{1};

bool isStillThere(int file, const fs::path& path) {
  struct stat open {
  }, there{};
  return ::fstat(file, &open) == 0 && ::stat(path.c_str(), &there) == 0 && open.st_ino == there.st_ino &&
         open.st_dev == there.st_dev;
}

/// The file's text without its last line break; empty when it cannot be read.
std::string textOf(const fs::path& path) {
  std::optional<Error> ignored;
  std::string text = readFile(path, ignored).value_or("");
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

/// When a process began, in ticks since the machine's start, which no other process of its number shares;
/// empty when there is none.
std::string startOf(const std::string& process) {
  const std::string facts = textOf("/proc/" + process + "/stat");
  // The second field, the program's name in brackets, may hold blanks and brackets.
  auto at = facts.rfind(')');
  for (int field = 2; field < 22 && at != std::string::npos; ++field) at = facts.find(' ', at + 1);
  return at == std::string::npos ? "" : facts.substr(at + 1, facts.find(' ', at + 1) - at - 1);
}

/// The machine, its present start, and the world in which process numbers mean something.
std::string worldOf() {
  std::array<char, 256> host{};
  ::gethostname(host.data(), host.size() - 1);
  std::error_code ignored;
  return fmt::format("{} {} {}", host.data(), textOf("/proc/sys/kernel/random/boot_id"),
                     fs::read_symlink("/proc/self/ns/pid", ignored).string());
}

std::string markOfThisProcess() {
  const std::string process = std::to_string(::getpid());
  return fmt::format("{} {} {}", worldOf(), process, startOf(process));
}

/// Whether who wrote the mark is known to be gone. Of another machine, or of a container, nothing is known.
bool isDead(const std::string& mark, const fs::path& path) {
  if (mark.empty()) {
    std::error_code error;
    const auto written = fs::last_write_time(path, error);
    return !error && fs::file_time_type::clock::now() - written > emptyMarkIsDeadAfter;
  }
  const auto startAt = mark.rfind(' ');
  const auto processAt = mark.rfind(' ', startAt - 1);
  if (startAt == std::string::npos || processAt == std::string::npos) return false;
  if (mark.substr(0, processAt) == worldOf())
    return startOf(mark.substr(processAt + 1, startAt - processAt - 1)) != mark.substr(startAt + 1);
  const auto firstWord = [](const std::string& text) { return text.substr(0, text.find(' ') + 1); };
  const bool isThisBoot = mark.find(textOf("/proc/sys/kernel/random/boot_id")) != std::string::npos;
  return firstWord(mark) == firstWord(worldOf()) && !isThisBoot;
}

/// Takes a dead owner's mark away, unless somebody else did first: what they have made since stays.
void removeDead(const std::string& mark, const fs::path& path) {
  fs::path aside = path;
  aside += "." + makeUUID();
  std::error_code error;
  fs::rename(path, aside, error);
  if (error) return;
  if (textOf(aside) != mark) fs::create_hard_link(aside, path, error);
  fs::remove(aside, error);
}

}  // namespace

FolderLock::~FolderLock() {
  if (!mark_.empty()) ::unlink(mark_.c_str());
}

std::optional<FolderLock> FolderLock::take(const fs::path& path, LockFile lock) {
  for (int attempt = 0; attempt < attempts; ++attempt) {
    // Whose file it is matters where there are no locks.
    FileDescriptor file(::open(path.c_str(), lockFlags | O_EXCL, 0600));
    const bool isMine = file.isOpen();
    if (!isMine && errno == EEXIST) file = FileDescriptor(::open(path.c_str(), lockFlags, 0600));
    if (!file.isOpen()) return std::nullopt;
    if (lock(file.get(), LOCK_EX | LOCK_NB) == 0) {
      if (isStillThere(file.get(), path)) return FolderLock(std::move(file), {});
      continue;
    }
    if (errno == EINTR) continue;
    if (errno == EWOULDBLOCK) return std::nullopt;
    if (isMine) return mark(std::move(file), path);
    const std::string present = textOf(path);
    if (!isDead(present, path)) return std::nullopt;
    removeDead(present, path);
  }
  return std::nullopt;
}

std::optional<FolderLock> FolderLock::mark(FileDescriptor file, const fs::path& path) {
  const std::string text = markOfThisProcess();
  if (::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()))
    return FolderLock(std::move(file), path);
  ::unlink(path.c_str());
  return std::nullopt;
}

}  // namespace vantorium
