#include "hosts/headless/headless_device.hpp"

#include <fmt/format.h>

#include <stdexcept>

namespace vantorium::headless {

using nlohmann::json;

namespace {

std::optional<std::string> text(const json& value) {
  return value.is_null() ? std::nullopt : std::optional(value.get<std::string>());
}

BatteryState batteryState(const json& value) {
  if (value == "charging") return BatteryState::charging;
  if (value == "full") return BatteryState::full;
  if (value == "unplugged") return BatteryState::unplugged;
  if (value == "unknown" || value.is_null()) return BatteryState::unknown;
  throw std::invalid_argument("a battery state is charging, full, unplugged or unknown");
}

SdkBundle sdkBundle(const json& dictionary) {
  if (!dictionary.is_object()) throw std::invalid_argument("a bundle is an object");
  const auto found = dictionary.find("CFBundleShortVersionString");
  if (found == dictionary.end()) return {};
  if (found->is_string()) return {found->get<std::string>()};
  if (found->is_boolean()) return {found->get<bool>()};
  if (found->is_number_integer()) return {found->get<std::int64_t>()};
  if (found->is_number()) return {found->get<double>()};
  throw std::invalid_argument("a bundle's version is a text, a number or a boolean");
}

}  // namespace

HeadlessDevice::HeadlessDevice() {
  facts_.systemVersion = "12.1";
  facts_.model = "Headless";
  facts_.machine = "headless1,1";
  facts_.screenWidth = 390;
  facts_.screenHeight = 844;
  facts_.volume = 0.5F;
  facts_.batteryLevel = 0.75F;
  facts_.batteryState = BatteryState::unplugged;
  facts_.languages = {"en-US"};
  facts_.freeSpace = 64'000'000'000;
  facts_.bundleIdentifier = "org.example.app";
  facts_.appVersion = "1.0";
}

DeviceFacts HeadlessDevice::facts() const {
  MutexLock lock(mutex_);
  return facts_;
}

bool HeadlessDevice::fileExists(const std::string& path) const {
  MutexLock lock(mutex_);
  return existingPaths_.contains(path);
}

bool HeadlessDevice::createFile(const std::string& /*path*/) { return false; }

std::optional<std::string> HeadlessDevice::set(const std::string& fact, const json& value) {
  MutexLock lock(mutex_);
  try {
    setLocked(fact, value);
    return std::nullopt;
  } catch (const std::exception& problem) {
    return fmt::format("The fact \"{}\" cannot be {}: {}", fact, value.dump(), problem.what());
  }
}

void HeadlessDevice::setLocked(const std::string& fact, const json& value) {
  const DeviceFacts unset;
  const bool gone = value.is_null();
  if (fact == "systemVersion") {
    facts_.systemVersion = text(value).value_or("");
  } else if (fact == "model") {
    facts_.model = text(value).value_or("");
  } else if (fact == "hardware") {
    facts_.machine = text(value).value_or("");
  } else if (fact == "batteryState") {
    facts_.batteryState = batteryState(value);
  } else if (fact == "batteryLevel") {
    facts_.batteryLevel = gone ? unset.batteryLevel : value.get<float>();
  } else if (fact == "volume") {
    facts_.volume = gone ? unset.volume : value.get<float>();
  } else if (fact == "timezone") {
    facts_.timezone = text(value).value_or(unset.timezone);
  } else if (fact == "languages") {
    facts_.languages = gone ? unset.languages : value.get<std::vector<std::string>>();
  } else if (fact == "locale") {
    facts_.locale = text(value).value_or(unset.locale);
  } else if (fact == "carrier") {
    facts_.carrier = text(value);
  } else if (fact == "trackingEnabled") {
    facts_.trackingEnabled = !gone && value.get<bool>();
  } else if (fact == "idfa") {
    facts_.advertisingIdentifier = text(value);
  } else if (fact == "freeSpace") {
    facts_.freeSpace = gone ? std::nullopt : std::optional(value.get<std::int64_t>());
  } else if (fact == "bundleIdentifier") {
    facts_.bundleIdentifier = text(value);
  } else if (fact == "appVersion") {
    facts_.appVersion = text(value);
  } else if (fact == "screen") {
    facts_.screenWidth = value.at(0).get<double>();
    facts_.screenHeight = value.at(1).get<double>();
  } else if (fact == "environment") {
    facts_.environment = gone ? unset.environment : value.get<std::map<std::string, std::string>>();
  } else if (fact == "existingPaths") {
    existingPaths_ = gone ? std::set<std::string>{} : value.get<std::set<std::string>>();
  } else if (fact == "bundle") {
    facts_.sdkBundle = gone ? std::nullopt : std::optional(sdkBundle(value));
  } else {
    throw std::invalid_argument("there is no fact of this name");
  }
}

HeadlessReachability::State HeadlessReachability::state() const {
  MutexLock lock(mutex_);
  return state_;
}

void HeadlessReachability::setState(State state) {
  MutexLock lock(mutex_);
  state_ = std::move(state);
}

}  // namespace vantorium::headless
