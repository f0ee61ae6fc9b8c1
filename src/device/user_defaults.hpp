#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "context/sdk_context.hpp"
#include "platform/foundation/clock.hpp"

namespace vantorium {

/// The keys under which the SDK remembers things.
namespace settings_keys {
inline constexpr const char* appInstallDate = "com.vantorium.appInstallDate";
inline constexpr const char* appVersion = "com.vantorium.appVersion";
inline constexpr const char* appLastUpdateDate = "com.vantorium.appLastUpdateDate";
inline constexpr const char* userID = "com.vantorium.userID";
}  // namespace settings_keys

/// Strings and dates by key that survive the process, in one file of a folder that every process of the
/// application shares. Every read goes to the file; a write takes the file's lock, reads, changes and
/// replaces it as a whole, so that neither another process nor a kill loses a key. Values of other types, and
/// keys of others, survive.
///
/// Nobody waits for another process: while one holds the lock, changes are kept here, where every read sees
/// them, and a thread of their own waits to write them, over what that process has written by then.
///
/// Nothing fails: what cannot be written is kept for this process and goes along with the next write. Any
/// thread.
class UserDefaults {
 public:
  using Value = std::variant<std::string, Date>;

  /// The settings of one moment, and the changes made to them.
  class Values {
   public:
    /// The value under `key` if it is a string.
    std::optional<std::string> string(const std::string& key) const;
    /// The value under `key` if it is a date.
    std::optional<Date> date(const std::string& key) const;
    void set(const std::string& key, Value value);

   private:
    friend class UserDefaults;
    std::map<std::string, Value> values_;
    std::map<std::string, Value> changes_;
  };

  explicit UserDefaults(std::filesystem::path folder);

  std::optional<std::string> string(const std::string& key) const;
  std::optional<Date> date(const std::string& key) const;
  std::optional<Date> getAppInstallDate() const { return date(settings_keys::appInstallDate); }
  std::optional<Date> getAppLastUpdateDate() const { return date(settings_keys::appLastUpdateDate); }
  void set(const std::string& key, Value value);

  /// Several reads and writes as one step, unless another process changes the settings at this very moment:
  /// of one key the later write counts then. `change` runs inside this call, under the lock: it must not come
  /// back here, nor call out.
  void update(const std::function<void(Values&)>& change);

 private:
  class Store;

  const std::shared_ptr<Store> store_;
};

/// Keeps the SDK's settings up to date at each launch. Any thread.
class UserDefaultsClient {
 public:
  explicit UserDefaultsClient(std::shared_ptr<SdkContext> context);

  const std::shared_ptr<UserDefaults>& defaults() const { return defaults_; }

  /// Remembers now as the installation's date, once.
  void recordInstallDate();
  /// Remembers the application's version and, when it differs from the one last seen, now as the date of the
  /// update.
  void updateAppVersion();
  /// The user id to use: the given one, else the one last used, else a fresh UUID. It is remembered.
  std::string updateUserID(std::optional<std::string> newUserID);

  /// The three steps above, in that order, as one write. Returns the user id to use.
  std::string recordLaunch(std::optional<std::string> newUserID);

 private:
  static void recordInstallDate(UserDefaults::Values& values, Date now);
  static void updateAppVersion(UserDefaults::Values& values, const std::optional<std::string>& current,
                               Date now);
  static std::string updateUserID(UserDefaults::Values& values, std::optional<std::string> newUserID);

  const std::shared_ptr<SdkContext> context_;
  const std::shared_ptr<UserDefaults> defaults_;
};

}  // namespace vantorium
