#include "device/user_defaults.hpp"

#include <pthread.h>

#include <exception>
#include <thread>
#include <utility>

#include "device/settings_file.hpp"
#include "platform/foundation/files.hpp"
#include "platform/foundation/signal_block.hpp"

namespace vantorium {

namespace fs = std::filesystem;

namespace {

template <typename T>
std::optional<T> find(const SettingsValues& values, const std::string& key) {
  const auto found = values.find(key);
  const T* value = found == values.end() ? nullptr : std::get_if<T>(&found->second);
  return value != nullptr ? std::optional<T>(*value) : std::nullopt;
}

}  // namespace

/// The changes on their way to the file, shared with the thread that waits for its lock.
class UserDefaults::Store {
 public:
  explicit Store(fs::path folder) : folder_(std::move(folder)) {}

  SettingsValues values() const EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return values(SettingsFile(folder_));
  }

  /// Whether somebody is needed who waits for the lock and then calls `saveWhenFree`.
  bool update(const std::function<void(Values&)>& change) EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    createDirectoryIfNeeded(folder_);
    const SettingsLock fileLock(folder_, SettingsLock::Patience::none);
    SettingsFile file(folder_);
    Values values;
    values.values_ = this->values(file);
    change(values);
    values.changes_.merge(unsaved_);  // of two changes the new one counts
    unsaved_ = std::move(values.changes_);
    save(file, fileLock);
    return fileLock.isBusy() && !unsaved_.empty() && !std::exchange(isWaiting_, true);
  }

  /// Sleeps until nobody else holds the lock.
  void saveWhenFree() EXCLUDES(mutex_) {
    // Not under the mutex: whoever holds the lock may have been stopped, and nobody here is to wait for that.
    std::optional<SettingsLock> fileLock(std::in_place, folder_, SettingsLock::Patience::endless);
    const MutexLock lock(mutex_);
    isWaiting_ = false;
    SettingsFile file(folder_);
    save(file, *fileLock);
    fileLock.reset();  // so that whoever has the mutex next finds it free
  }

  /// What is unsaved goes along with the next write.
  void giveUpWaiting() EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    isWaiting_ = false;
  }

 private:
  SettingsValues values(const SettingsFile& file) const REQUIRES(mutex_) {
    SettingsValues values = unsaved_;
    values.merge(file.values());
    return values;
  }

  void save(SettingsFile& file, const SettingsLock& lock) REQUIRES(mutex_) {
    if (lock.isHeld() && !unsaved_.empty() && file.write(unsaved_, lock)) unsaved_.clear();
  }

  const fs::path folder_;
  mutable Mutex mutex_;
  /// Changes that have not reached the file.
  SettingsValues unsaved_ GUARDED_BY(mutex_);
  bool isWaiting_ GUARDED_BY(mutex_) = false;  ///< a thread does
};

std::optional<std::string> UserDefaults::Values::string(const std::string& key) const {
  return find<std::string>(values_, key);
}

std::optional<Date> UserDefaults::Values::date(const std::string& key) const {
  return find<Date>(values_, key);
}

void UserDefaults::Values::set(const std::string& key, Value value) {
  changes_.insert_or_assign(key, value);
  values_.insert_or_assign(key, std::move(value));
}

UserDefaults::UserDefaults(fs::path folder) : store_(std::make_shared<Store>(std::move(folder))) {}

std::optional<std::string> UserDefaults::string(const std::string& key) const {
  return find<std::string>(store_->values(), key);
}

std::optional<Date> UserDefaults::date(const std::string& key) const {
  return find<Date>(store_->values(), key);
}

void UserDefaults::set(const std::string& key, Value value) {
  update([&](Values& values) { values.set(key, std::move(value)); });
}

void UserDefaults::update(const std::function<void(Values&)>& change) {
  if (!store_->update(change)) return;
  // A thread of its own, for a worker could be kept from its work for as long as the lock's holder likes.
  const SignalBlock block;
  try {
    std::thread([store = store_] {
      pthread_setname_np(pthread_self(), "vantorium.save");
      try {
        store->saveWhenFree();
      } catch (const std::exception&) {
        store->giveUpWaiting();
      }
    }).detach();
  } catch (const std::exception&) {
    store_->giveUpWaiting();
  }
}

}  // namespace vantorium
