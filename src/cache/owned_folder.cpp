#include "cache/owned_folder.hpp"

#include <exception>
#include <set>
#include <system_error>
#include <utility>

#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"
#include "platform/foundation/worker_pool.hpp"

namespace vantorium {

namespace fs = std::filesystem;

namespace {

constexpr const char* lockExtension = ".lock";
/// Between the name of a folder and a UUID: what was moved aside, and waits to be removed.
constexpr const char* asideMark = ".old-";

fs::path lockOf(const fs::path& folder) {
  fs::path lock = folder;
  return lock += lockExtension;
}

/// The names in `parent` that begin like the folder's, each without ".lock".
std::set<std::string> familyOf(const fs::path& parent, const std::string& name) {
  std::set<std::string> family;
  std::error_code error;
  for (fs::directory_iterator entry(parent, error), end; !error && entry != end; entry.increment(error)) {
    std::string each = entry->path().filename().string();
    if (each != name && !each.starts_with(name + ".")) continue;
    if (each.ends_with(lockExtension)) each.resize(each.size() - std::string(lockExtension).size());
    family.insert(std::move(each));
  }
  return family;
}

}  // namespace

OwnedFolder::OwnedFolder(const fs::path& parent, const std::string& name) : path_(parent / name) {
  createDirectoryIfNeeded(parent);
  const MutexLock lock(mutex_);
  if (take()) return;
  isBeside_ = true;
  // Somebody who collects may try the lock of a new folder in the moment before it is ours.
  constexpr int attempts = 5;
  for (int attempt = 0; attempt < attempts && !lock_; ++attempt) {
    path_ = parent / (name + "." + makeUUID());
    take();
  }
}

void OwnedFolder::own() const {
  const MutexLock lock(mutex_);
  if (!lock_) take();
}

bool OwnedFolder::take() const {
  auto lock = FolderLock::take(lockOf(path_));
  if (lock) lock_ = std::make_shared<FolderLock>(std::move(*lock));
  return lock.has_value();
}

OwnedFolder::~OwnedFolder() {
  if (!isBeside_) return;
  try {
    const MutexLock lock(mutex_);
    workers::async([path = path_, held = lock_] {
      removeAll(path);
      removeAll(lockOf(path));
    });
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
    // Out of memory. Whoever starts next finds the folder without an owner, and removes it.
  }
}

void OwnedFolder::empty() const {
  fs::path aside = path_;
  aside += asideMark + makeUUID();
  std::error_code error;
  fs::rename(path_, aside, error);
  if (error && error != std::errc::no_such_file_or_directory) removeAll(path_);
}

void OwnedFolder::collect(const fs::path& parent, const std::string& name, const fs::path& exceptFor) {
  for (const std::string& each : familyOf(parent, name)) {
    const fs::path folder = parent / each;
    if (folder == exceptFor) continue;
    if (each.find(asideMark) != std::string::npos) {
      removeAll(folder);
      continue;
    }
    const auto lock = FolderLock::take(lockOf(folder));
    if (!lock) continue;  // its owner lives: another process, or this one
    removeAll(folder);
    if (each != name) removeAll(lockOf(folder));  // nobody asks for that name again
  }
}

}  // namespace vantorium
