#pragma once

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "support/temporary_directory.hpp"

namespace vantorium::testing {

namespace fs = std::filesystem;

inline std::string bytesOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeBytes(const fs::path& path, const std::string& bytes) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

/// Runs the Python 3 of the machine; true when it ended well.
inline bool runPython(const std::string& arguments) {
  return std::system(("python3 " + arguments).c_str()) == 0;
}

inline long openDescriptors() {
  return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

/// Within its life no file can grow beyond 64 KiB: what a full disk is, without owning one.
class FullDisk {
 public:
  FullDisk() : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    rlimit small = before_;
    small.rlim_cur = 65536;
    ::setrlimit(RLIMIT_FSIZE, &small);
  }
  ~FullDisk() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }

 private:
  rlimit before_{};
  sighandler_t handler_;
};

/// A folder with a destination in it and with things beside the destination that nobody may touch.
class ArchiveCage {
 public:
  ArchiveCage() { reset(); }

  const fs::path& path() const { return home_.path(); }
  fs::path destination() const { return path() / "dest"; }

  void reset() {
    for (const auto& entry : fs::directory_iterator(path())) fs::remove_all(entry.path());
    fs::create_directories(destination());
    writeBytes(path() / "outside/victim.txt", "victim");
    before_ = beside();
  }

  /// Puts a thing into the destination: a file with this content, "d" for a folder, "l:target" for a symbolic
  /// link, "h:target" for a hard link; both targets count from the thing's folder.
  void place(const std::string& name, const std::string& what) const {
    const fs::path thing = destination() / name;
    fs::create_directories(thing.parent_path());
    if (what == "d") {
      fs::create_directory(thing);
    } else if (what.starts_with("l:")) {
      fs::create_symlink(what.substr(2), thing);
    } else if (what.starts_with("h:")) {
      fs::create_hard_link(thing.parent_path() / what.substr(2), thing);
    } else {
      writeBytes(thing, what);
    }
  }

  /// How many bytes appeared, or changed, or went away beside the destination; a folder counts as one.
  std::uint64_t bytesOutside() const {
    std::uint64_t bytes = 0;
    auto now = beside();
    for (const auto& [name, content] : before_) {
      if (!now.contains(name)) bytes += content.size();
    }
    for (const auto& [name, content] : now) {
      const auto old = before_.find(name);
      if (old == before_.end() || old->second != content) bytes += content.size();
    }
    return bytes;
  }

 private:
  using Contents = std::map<std::string, std::string>;

  Contents beside() const {
    Contents contents;
    for (auto entry = fs::recursive_directory_iterator(path()); entry != fs::recursive_directory_iterator();
         ++entry) {
      if (entry->path() == destination()) {
        entry.disable_recursion_pending();
        continue;
      }
      struct stat facts {};
      ::lstat(entry->path().c_str(), &facts);
      contents[entry->path().string()] =
          std::to_string(facts.st_mode) + (S_ISREG(facts.st_mode) ? bytesOf(entry->path()) : "");
    }
    return contents;
  }

  TemporaryDirectory home_;
  Contents before_;
};

}  // namespace vantorium::testing
