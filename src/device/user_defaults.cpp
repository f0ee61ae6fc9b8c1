#include "device/user_defaults.hpp"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <nlohmann/json.hpp>
#include <system_error>
#include <thread>

#include "model/json.hpp"
#include "platform/foundation/file_descriptor.hpp"
#include "platform/foundation/files.hpp"
#include "platform/foundation/temporary_file.hpp"

namespace vantorium {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr const char* fileName = "settings.json";
constexpr const char* lockName = "settings.lock";
constexpr const char* asideName = "settings.json.corrupt";
/// Marks a date, so that it is not taken for a number or a text.
constexpr const char* dateKey = "nanosecondsSince1970";

using Value = UserDefaults::Value;

/// The lock that all processes of the application share. The settings file itself is replaced by every write,
/// so it is another file that is locked; the system lets go of the lock when its holder dies.
class FileLock {
 public:
  explicit FileLock(const fs::path& path) : file_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    // A holder needs a fraction of a millisecond. One that was stopped while it held the lock must not stop
    // us too.
    const auto patience = std::chrono::steady_clock::now() + std::chrono::milliseconds(250);
    while (file_.isOpen() && !tryLock() && std::chrono::steady_clock::now() < patience)
      std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  /// Whether to write. A file system without locks counts as locked: the settings are still replaced as a
  /// whole.
  bool isHeld() const { return isHeld_; }
  /// Whether nobody else writes.
  bool isExclusive() const { return isExclusive_; }

 private:
  bool tryLock() {
    isExclusive_ = ::flock(file_.get(), LOCK_EX | LOCK_NB) == 0;
    isHeld_ = isExclusive_ || (errno != EWOULDBLOCK && errno != EINTR);
    return isHeld_;
  }

  FileDescriptor file_;
  bool isHeld_ = false;
  bool isExclusive_ = false;
};

std::optional<Value> valueOf(const json& stored) {
  if (stored.is_string()) return stored.get<std::string>();
  if (!stored.is_object()) return std::nullopt;
  const auto found = stored.find(dateKey);
  if (found == stored.end() || !found->is_number_integer()) return std::nullopt;
  const std::chrono::nanoseconds sinceEpoch(found->get<std::int64_t>());
  return Date(std::chrono::duration_cast<Date::duration>(sinceEpoch));
}

json storedForm(const Value& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  const auto sinceEpoch = std::get<Date>(value).time_since_epoch();
  return {{dateKey, std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch).count()}};
}

enum class Content { readable, corrupt, unreadable };

/// The settings file as an object; empty when there is none yet.
json readDocument(const fs::path& folder, Content& content) {
  std::optional<Error> error;
  const auto text = readFile(folder / fileName, error);
  if (!text) {
    content = error->code() == ENOENT ? Content::readable : Content::unreadable;
    return json::object();
  }
  auto document = parseJSON(*text, error);
  content = document && document->is_object() ? Content::readable : Content::corrupt;
  return content == Content::readable ? std::move(*document) : json::object();
}

std::map<std::string, Value> valuesOf(const json& document, const std::map<std::string, Value>& unsaved) {
  std::map<std::string, Value> values = unsaved;
  for (const auto& [key, stored] : document.items())
    if (auto value = valueOf(stored)) values.emplace(key, std::move(*value));
  return values;
}

/// What a process that was killed while it wrote has left; only to be called by the one holder of the lock.
void removeLeftovers(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    std::error_code ignored;
    if (entry->path().filename().string().starts_with(TemporaryFile::hiddenPrefix))
      fs::remove(entry->path(), ignored);
  }
}

template <typename T>
std::optional<T> find(const std::map<std::string, Value>& values, const std::string& key) {
  const auto found = values.find(key);
  const T* value = found == values.end() ? nullptr : std::get_if<T>(&found->second);
  return value != nullptr ? std::optional<T>(*value) : std::nullopt;
}

}  // namespace

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

UserDefaults::UserDefaults(fs::path folder) : folder_(std::move(folder)) {}

std::map<std::string, Value> UserDefaults::load() const {
  Content content{};
  return valuesOf(readDocument(folder_, content), unsaved_);
}

std::optional<std::string> UserDefaults::string(const std::string& key) const {
  const MutexLock lock(mutex_);
  return find<std::string>(load(), key);
}

std::optional<Date> UserDefaults::date(const std::string& key) const {
  const MutexLock lock(mutex_);
  return find<Date>(load(), key);
}

void UserDefaults::set(const std::string& key, Value value) {
  update([&](Values& values) { values.set(key, std::move(value)); });
}

void UserDefaults::update(const std::function<void(Values&)>& change) {
  const MutexLock lock(mutex_);
  createDirectoryIfNeeded(folder_);
  const FileLock fileLock(folder_ / lockName);
  Content content{};
  json document = readDocument(folder_, content);

  Values values;
  values.values_ = valuesOf(document, unsaved_);
  change(values);
  values.changes_.merge(unsaved_);  // of two changes the new one counts
  unsaved_ = std::move(values.changes_);
  if (!fileLock.isHeld() || content == Content::unreadable || unsaved_.empty()) return;

  std::error_code ignored;
  if (content == Content::corrupt) fs::rename(folder_ / fileName, folder_ / asideName, ignored);
  for (const auto& [key, value] : unsaved_) document[key] = storedForm(value);
  if (fileLock.isExclusive()) removeLeftovers(folder_);
  if (!writeFileAtomically(folder_ / fileName, prettyPrinted(document) + "\n")) unsaved_.clear();
}

}  // namespace vantorium
