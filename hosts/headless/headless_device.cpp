#include "hosts/headless/headless_device.hpp"

#include <fmt/format.h>

#include <cmath>
#include <stdexcept>

namespace vantorium::headless {

using nlohmann::json;

namespace {

std::optional<std::string> text(const json& value) {
  return value.is_null() ? std::nullopt : std::optional(value.get<std::string>());
}

float number(const json& value) {
  constexpr double most = 1e6;
  const double wide = value.get<double>();
  if (!(std::abs(wide) <= most)) throw std::invalid_argument("it is too large");
  return static_cast<float>(wide);
}

std::int64_t bytes(const json& value) {
  constexpr double most = 9e18;
  if (!value.is_number_integer() || std::abs(value.get<double>()) > most)
    throw std::invalid_argument("it is no number of bytes");
  return value.get<std::int64_t>();
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
  DeviceFacts& facts = device_.facts;
  facts.systemVersion = "12.1";
  facts.model = "Headless";
  facts.machine = "headless1,1";
  facts.screenWidth = 390;
  facts.screenHeight = 844;
  facts.volume = 0.5F;
  facts.batteryLevel = 0.75F;
  facts.batteryState = BatteryState::unplugged;
  facts.languages = {"en-US"};
  facts.freeSpace = 64'000'000'000;
  facts.bundleIdentifier = "org.example.app";
  facts.appVersion = "1.0";
}

DeviceFacts HeadlessDevice::facts() const {
  MutexLock lock(mutex_);
  return device_.facts;
}

bool HeadlessDevice::fileExists(const std::string& path) const {
  MutexLock lock(mutex_);
  return device_.existingPaths.contains(path);
}

bool HeadlessDevice::createFile(const std::string& /*path*/) { return false; }

std::optional<std::string> HeadlessDevice::set(const std::string& fact, const json& value) {
  json facts = json::object();
  facts[fact] = value;
  return set(facts);
}

std::optional<std::string> HeadlessDevice::set(const json& facts) {
  MutexLock lock(mutex_);
  Device changed = device_;
  for (const auto& [fact, value] : facts.items()) {
    try {
      change(changed, fact, value);
    } catch (const std::exception& problem) {
      return fmt::format("The fact \"{}\" cannot be {}: {}", fact,
                         value.dump(-1, ' ', false, json::error_handler_t::replace), problem.what());
    }
  }
  device_ = std::move(changed);
  return std::nullopt;
}

void HeadlessDevice::change(Device& device, const std::string& fact, const json& value) {
  DeviceFacts& facts = device.facts;
  const DeviceFacts unset;
  const bool gone = value.is_null();
  if (fact == "systemVersion") {
    facts.systemVersion = text(value).value_or("");
  } else if (fact == "model") {
    facts.model = text(value).value_or("");
  } else if (fact == "hardware") {
    facts.machine = text(value).value_or("");
  } else if (fact == "batteryState") {
    facts.batteryState = batteryState(value);
  } else if (fact == "batteryLevel") {
    facts.batteryLevel = gone ? unset.batteryLevel : number(value);
  } else if (fact == "volume") {
    facts.volume = gone ? unset.volume : number(value);
  } else if (fact == "timezone") {
    facts.timezone = text(value).value_or(unset.timezone);
  } else if (fact == "languages") {
    facts.languages = gone ? unset.languages : value.get<std::vector<std::string>>();
  } else if (fact == "locale") {
    facts.locale = text(value).value_or(unset.locale);
  } else if (fact == "carrier") {
    facts.carrier = text(value);
  } else if (fact == "trackingEnabled") {
    facts.trackingEnabled = !gone && value.get<bool>();
  } else if (fact == "idfa") {
    facts.advertisingIdentifier = text(value);
  } else if (fact == "freeSpace") {
    facts.freeSpace = gone ? std::nullopt : std::optional(bytes(value));
  } else if (fact == "bundleIdentifier") {
    facts.bundleIdentifier = text(value);
  } else if (fact == "appVersion") {
    facts.appVersion = text(value);
  } else if (fact == "screen") {
    facts.screenWidth = value.at(0).get<double>();
    facts.screenHeight = value.at(1).get<double>();
  } else if (fact == "environment") {
    facts.environment = gone ? unset.environment : value.get<std::map<std::string, std::string>>();
  } else if (fact == "existingPaths") {
    device.existingPaths = gone ? std::set<std::string>{} : value.get<std::set<std::string>>();
  } else if (fact == "bundle") {
    facts.sdkBundle = gone ? std::nullopt : std::optional(sdkBundle(value));
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
