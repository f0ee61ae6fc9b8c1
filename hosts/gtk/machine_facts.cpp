#include "hosts/gtk/machine_facts.hpp"

#include <glib.h>
#include <sys/statvfs.h>
#include <sys/utsname.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <system_error>

namespace vantorium::gtk {

namespace fs = std::filesystem;

namespace {

std::string firstLine(const fs::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  return line;
}

std::optional<int> number(const std::string& text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end != text.data() ? std::optional(value) : std::nullopt;
}

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

bool isNeutral(const std::string& locale) { return locale.empty() || locale == "C" || locale == "POSIX"; }

// The locale of messages or dates: the first variable that is set decides.
std::string localeOf(const char* category) {
  for (const char* name : {"LC_ALL", category, "LANG"}) {
    if (const std::string value = variable(name); !value.empty())
      return value.substr(0, value.find_first_of(".@"));
  }
  return {};
}

std::string languageTag(const std::string& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const auto tag = icu::Locale::createCanonical(locale.c_str()).toLanguageTag<std::string>(status);
  return U_SUCCESS(status) && tag != "und" ? tag : "";
}

}  // namespace

std::string systemVersion(const fs::path& osRelease) {
  constexpr std::string_view key = "VERSION_ID=";
  std::ifstream stream(osRelease);
  for (std::string line; std::getline(stream, line);) {
    if (line.compare(0, key.size(), key) != 0) continue;
    std::string value = line.substr(key.size());
    value.erase(std::remove_if(value.begin(), value.end(), [](char c) { return c == '"' || c == '\''; }),
                value.end());
    return value;
  }
  return {};
}

std::string modelForChassis(const std::string& chassis) {
  if (chassis == "handset") return "Linux phone";
  if (chassis == "tablet") return "Linux tablet";
  if (chassis == "laptop" || chassis == "convertible") return "Linux laptop";
  return "Linux desktop";
}

std::string chassisFromFirmware(const fs::path& chassisType) {
  switch (number(firstLine(chassisType)).value_or(0)) {
    case 8:
    case 9:
    case 10:
    case 14:
      return "laptop";
    case 11:
      return "handset";
    case 30:
      return "tablet";
    case 31:
    case 32:
      return "convertible";
    default:
      return {};
  }
}

Battery readBattery(const fs::path& powerSupplies) {
  std::error_code error;
  for (fs::directory_iterator supply(powerSupplies, error), end; !error && supply != end;
       supply.increment(error)) {
    const fs::path& folder = supply->path();
    // A "Device" battery is that of a mouse or a headset.
    if (firstLine(folder / "type") != "Battery" || firstLine(folder / "scope") == "Device") continue;
    Battery battery;
    if (const auto capacity = number(firstLine(folder / "capacity"))) {
      battery.level = static_cast<float>(std::clamp(*capacity, 0, 100)) / 100;
    }
    const std::string status = firstLine(folder / "status");
    if (status == "Charging") battery.state = BatteryState::charging;
    if (status == "Full") battery.state = BatteryState::full;
    if (status == "Discharging" || status == "Not charging") battery.state = BatteryState::unplugged;
    return battery;
  }
  return {};
}

std::optional<std::int64_t> freeSpace() {
  const char* folder = g_get_user_special_dir(G_USER_DIRECTORY_DOCUMENTS);
  struct statvfs info {};
  if ((folder == nullptr || statvfs(folder, &info) != 0) && statvfs(g_get_home_dir(), &info) != 0)
    return std::nullopt;
  return static_cast<std::int64_t>(info.f_bavail) * static_cast<std::int64_t>(info.f_frsize);
}

std::vector<std::string> preferredLanguages() {
  const std::string locale = localeOf("LC_MESSAGES");
  std::vector<std::string> tags;
  const auto add = [&](const std::string& name) {
    const std::string tag = isNeutral(name) ? "" : languageTag(name);
    if (!tag.empty() && std::find(tags.begin(), tags.end(), tag) == tags.end()) tags.push_back(tag);
  };
  // LANGUAGE refines a locale; the neutral one takes no languages.
  if (!isNeutral(locale)) {
    std::string list = variable("LANGUAGE");
    for (std::size_t start = 0; start <= list.size() && !list.empty();) {
      const std::size_t end = std::min(list.find(':', start), list.size());
      add(list.substr(start, end - start).substr(0, list.substr(start, end - start).find_first_of(".@")));
      start = end + 1;
    }
  }
  add(locale);
  return tags;
}

std::string dateLocale() {
  const std::string locale = localeOf("LC_TIME");
  return isNeutral(locale) ? "en_US" : icu::Locale::createCanonical(locale.c_str()).getName();
}

std::string timeZone() {
  icu::UnicodeString identifier;
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  if (!zone || *zone == icu::TimeZone::getUnknown()) return "UTC";
  std::string text;
  return zone->getID(identifier).toUTF8String(text);
}

std::string machineName() {
  utsname name{};
  return uname(&name) == 0 ? name.machine : "";
}

}  // namespace vantorium::gtk
