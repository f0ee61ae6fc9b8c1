#pragma once

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <variant>

#include "platform/foundation/clock.hpp"
#include "platform/foundation/file_descriptor.hpp"

namespace vantorium {

using SettingsValues = std::map<std::string, std::variant<std::string, Date>>;

/// The lock that all processes of the application share while they change the settings. The settings file
/// itself is replaced by every write, so it is another file that is locked; the system lets go of the lock
/// when its holder dies. One thread at a time.
class SettingsLock {
 public:
  enum class Patience {
    none,    ///< one try
    endless  ///< until whoever holds it lets go
  };
  SettingsLock(const std::filesystem::path& folder, Patience patience);

  /// Whether somebody else holds it.
  bool isBusy() const { return state_ == State::busy; }
  /// Whether to write. A file system without locks counts as locked: the settings are still replaced as a
  /// whole.
  bool isHeld() const { return state_ == State::exclusive || state_ == State::shared; }
  /// Whether nobody else writes.
  bool isExclusive() const { return state_ == State::exclusive; }

 private:
  enum class State { exclusive, shared, busy, none };

  FileDescriptor file_;
  State state_ = State::none;
};

/// The settings file of a folder, as it is at one moment. One thread at a time.
class SettingsFile {
 public:
  explicit SettingsFile(const std::filesystem::path& folder);

  /// All that is of a kind we know.
  SettingsValues values() const;
  /// Writes `changes` over what was read; what is of other kinds stays. Whether it reached the disk. A file
  /// that is no settings file is moved aside before. `lock` must be held.
  bool write(const SettingsValues& changes, const SettingsLock& lock);

 private:
  enum class Content { readable, corrupt, unreadable };

  const std::filesystem::path folder_;
  nlohmann::json document_;  ///< an object; empty when there is no file yet
  Content content_;
};

}  // namespace vantorium
