#include "device/init_request_builder.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <nlohmann/json.hpp>

#include <vantorium/version.h>

#include "platform/foundation/ascii.hpp"
#include "platform/foundation/date_format.hpp"

namespace vantorium {

using nlohmann::json;

namespace {

/// The number as people wrote it: 0.8, not the 0.800000011920929 that a wider type would show.
double shortestDecimal(float number) {
  const std::string text = fmt::format("{}", number);
  double result = number;
  std::from_chars(text.data(), text.data() + text.size(), result);
  return result;
}

/// Milliseconds since 1970, of whole seconds.
std::int64_t timestamp(Date date) {
  return std::chrono::duration_cast<std::chrono::seconds>(date.time_since_epoch()).count() * 1000;
}

template <typename T>
const T* parameter(const Parameters& parameters, const char* key) {
  const auto found = parameters.find(key);
  return found == parameters.end() ? nullptr : std::get_if<T>(&found->second);
}

template <typename T>
void add(json& body, const char* key, const std::optional<T>& value) {
  if (value) body[key] = *value;
}

/// A platform without bundles leaves it to the library itself to know its version.
void addSDKVersion(json& body, const DeviceFacts& facts) {
  if (!facts.sdkBundle) {
    body["sdkVersion"] = VANTORIUM_VERSION;
  } else if (facts.sdkBundle->shortVersion) {
    std::visit([&](const auto& stored) { body["sdkVersion"] = stored; }, *facts.sdkBundle->shortVersion);
  }
}

void addUser(json& body, const Parameters& parameters, const DeviceFacts& facts) {
  if (const auto* gender = parameter<std::string>(parameters, "gender")) body["gender"] = *gender;
  if (const auto* age = parameter<std::int64_t>(parameters, "age")) body["age"] = *age;
  // The service expects the year of the week, which differs from the calendar's around New Year.
  if (const auto* birth = parameter<Date>(parameters, "dateOfBirth"))
    body["dateOfBirth"] = formatDate(*birth, "YYYY/MM/dd", facts.timezone, facts.locale);
}

std::optional<std::string> advertisingIdentifier(const DeviceFacts& facts) {
  if (!facts.trackingEnabled || !facts.advertisingIdentifier) return std::nullopt;
  return asciiUppered(*facts.advertisingIdentifier);
}

}  // namespace

json InitRequestBuilder::requestBody(Host& host, const UserDefaults& defaults, const std::string& appID,
                                     const std::string& userID, const std::optional<Parameters>& parameters) {
  const DeviceFacts facts = host.device().facts();
  json body = {
      {"appId", appID},
      {"userId", userID},
      {"osVersion", facts.systemVersion},
      {"manufacturer", "apple"},
      {"sWidth", facts.screenWidth},
      {"sHeight", facts.screenHeight},
      {"platform", facts.model},
      {"model", hardware(facts)},
      {"rooted", isJailbroken(host.device())},
      {"timezone", facts.timezone},
      {"volumeLevel", shortestDecimal(facts.volume)},
      {"batteryLevel", shortestDecimal(facts.batteryLevel)},
      {"batteryState", batteryStateString(facts.batteryState)},
  };
  if (parameters) addUser(body, *parameters, facts);
  add(body, "package", facts.bundleIdentifier);
  addSDKVersion(body, facts);
  add(body, "idfa", advertisingIdentifier(facts));
  add(body, "carrier", facts.carrier);
  if (!facts.languages.empty()) body["locale"] = facts.languages.front();
  if (const auto space = remainingFreeSpace(facts)) body["diskFreeSize"] = std::to_string(*space);
  add(body, "appVersion", facts.appVersion);
  if (const auto date = defaults.getAppInstallDate()) body["firstInstallTime"] = timestamp(*date);
  if (const auto date = defaults.getAppLastUpdateDate()) body["lastUpdateTime"] = timestamp(*date);
  return body;
}

std::string hardware(const DeviceFacts& facts) {
  const auto simulated = facts.environment.find("SIMULATOR_MODEL_IDENTIFIER");
  return simulated != facts.environment.end() ? simulated->second : facts.machine;
}

bool isJailbroken(DeviceInformation& device) {
  constexpr std::array tellTales{"/Applications/Cydia.app", "/Library/MobileSubstrate/MobileSubstrate.dylib",
                                 "/bin/bash", "/usr/sbin/sshd", "/etc/apt"};
  return std::ranges::any_of(tellTales, [&](const char* path) { return device.fileExists(path); }) ||
         device.createFile("/private/jailbreak.txt");
}

std::string batteryStateString(BatteryState state) {
  switch (state) {
    case BatteryState::charging:
      return "CHARGING";
    case BatteryState::full:
      return "FULL";
    case BatteryState::unplugged:
      return "NOT_CHARGING";
    case BatteryState::unknown:
      break;
  }
  return "UNKNOWN";
}

std::optional<std::int64_t> remainingFreeSpace(const DeviceFacts& facts) { return facts.freeSpace; }

}  // namespace vantorium
