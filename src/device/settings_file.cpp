#include "device/settings_file.hpp"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <optional>
#include <system_error>

#include "model/json.hpp"
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

using Value = SettingsValues::mapped_type;

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

/// What a process that was killed while it wrote has left; only to be called by the one holder of the lock.
void removeLeftovers(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    std::error_code ignored;
    if (entry->path().filename().string().starts_with(TemporaryFile::hiddenPrefix))
      fs::remove(entry->path(), ignored);
  }
}

}  // namespace

SettingsLock::SettingsLock(const fs::path& folder, Patience patience)
    : file_(::open((folder / lockName).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
  if (!file_.isOpen()) return;
  const int operation = LOCK_EX | (patience == Patience::none ? LOCK_NB : 0);
  int result = -1;
  do {
    result = ::flock(file_.get(), operation);
  } while (result != 0 && errno == EINTR);
  state_ = result == 0 ? State::exclusive : errno == EWOULDBLOCK ? State::busy : State::shared;
}

SettingsFile::SettingsFile(const fs::path& folder) : folder_(folder), document_(json::object()) {
  std::optional<Error> error;
  const auto text = readFile(folder / fileName, error);
  if (!text) {
    content_ = error->code() == ENOENT ? Content::readable : Content::unreadable;
    return;
  }
  auto document = parseJSON(*text, error);
  content_ = document && document->is_object() ? Content::readable : Content::corrupt;
  if (content_ == Content::readable) document_ = std::move(*document);
}

SettingsValues SettingsFile::values() const {
  SettingsValues values;
  for (const auto& [key, stored] : document_.items())
    if (auto value = valueOf(stored)) values.emplace(key, std::move(*value));
  return values;
}

bool SettingsFile::write(const SettingsValues& changes, const SettingsLock& lock) {
  if (content_ == Content::unreadable) return false;
  std::error_code ignored;
  if (content_ == Content::corrupt) fs::rename(folder_ / fileName, folder_ / asideName, ignored);
  for (const auto& [key, value] : changes) document_[key] = storedForm(value);
  if (lock.isExclusive()) removeLeftovers(folder_);
  return !writeFileAtomically(folder_ / fileName, prettyPrinted(document_) + "\n");
}

}  // namespace vantorium
