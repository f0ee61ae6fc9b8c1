#include "hosts/headless/headless_device.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>
#include <utility>

#include "hosts/headless/wording.hpp"

namespace vantorium::headless {

using nlohmann::json;

namespace {

constexpr std::size_t longestValue = 200;  // bytes, in a refusal

/// A fact cannot have a value: what it takes.
struct Expected : std::invalid_argument {
  using std::invalid_argument::invalid_argument;
};

std::optional<std::string> text(const json& value) {
  if (value.is_null()) return std::nullopt;
  if (!value.is_string()) throw Expected("a text, or null");
  return value.get<std::string>();
}

double number(const json& value, double most) {
  if (!value.is_number() || !(std::abs(value.get<double>()) <= most))
    throw Expected(fmt::format("a number from -{0:.0f} to {0:.0f}, or null", most));
  return value.get<double>();
}

float shortNumber(const json& value) { return static_cast<float>(number(value, 1e6)); }

std::int64_t bytes(const json& value) {
  constexpr double most = 9e18;
  if (!value.is_number_integer() || std::abs(value.get<double>()) > most)
    throw Expected("a whole number of bytes up to 9e18, or null");
  return value.get<std::int64_t>();
}

BatteryState batteryState(const json& value) {
  if (value == "charging") return BatteryState::charging;
  if (value == "full") return BatteryState::full;
  if (value == "unplugged") return BatteryState::unplugged;
  if (value == "unknown" || value.is_null()) return BatteryState::unknown;
  throw Expected("charging, full, unplugged, unknown or null");
}

/// A list or an object of texts.
template <typename Texts>
Texts texts(const json& value, bool isOfKind, const char* kind) {
  const auto isText = [](const json& each) { return each.is_string(); };
  if (!isOfKind || !std::all_of(value.begin(), value.end(), isText)) throw Expected(kind);
  return value.get<Texts>();
}

template <typename Texts>
Texts listOfTexts(const json& value) {
  return texts<Texts>(value, value.is_array(), "a list of texts, or null");
}

std::map<std::string, std::string> objectOfTexts(const json& value) {
  return texts<std::map<std::string, std::string>>(value, value.is_object(), "an object of texts, or null");
}

SdkBundle sdkBundle(const json& dictionary) {
  if (!dictionary.is_object()) throw Expected("an object, or null");
  const auto found = dictionary.find("CFBundleShortVersionString");
  if (found == dictionary.end()) return {};
  if (found->is_string()) return {found->get<std::string>()};
  if (found->is_boolean()) return {found->get<bool>()};
  if (found->is_number_integer()) return {found->get<std::int64_t>()};
  if (found->is_number()) return {found->get<double>()};
  throw Expected("an object whose CFBundleShortVersionString is a text, a number or a boolean");
}

/// Reads a value that may be null, which leaves what an unset fact has.
template <typename Fact, typename Read>
void assign(Fact& fact, const json& value, const Read& read, Fact unset = Fact{}) {
  fact = value.is_null() ? std::move(unset) : Fact(read(value));
}

struct Device {
  DeviceFacts& facts;
  std::set<std::string>& existingPaths;
};

using Change = void (*)(Device device, const json& value);

const DeviceFacts& unset() {
  static const DeviceFacts facts;
  return facts;
}

const std::map<std::string, Change>& changes() {
  static const std::map<std::string, Change> all{
      {"systemVersion", [](Device d, const json& v) { d.facts.systemVersion = text(v).value_or(""); }},
      {"model", [](Device d, const json& v) { d.facts.model = text(v).value_or(""); }},
      {"hardware", [](Device d, const json& v) { d.facts.machine = text(v).value_or(""); }},
      {"batteryState", [](Device d, const json& v) { d.facts.batteryState = batteryState(v); }},
      {"batteryLevel",
       [](Device d, const json& v) { assign(d.facts.batteryLevel, v, shortNumber, unset().batteryLevel); }},
      {"volume", [](Device d, const json& v) { assign(d.facts.volume, v, shortNumber, unset().volume); }},
      {"timezone", [](Device d, const json& v) { d.facts.timezone = text(v).value_or(unset().timezone); }},
      {"languages",
       [](Device d, const json& v) {
         assign(d.facts.languages, v, listOfTexts<std::vector<std::string>>, unset().languages);
       }},
      {"locale", [](Device d, const json& v) { d.facts.locale = text(v).value_or(unset().locale); }},
      {"carrier", [](Device d, const json& v) { d.facts.carrier = text(v); }},
      {"trackingEnabled",
       [](Device d, const json& v) {
         if (!v.is_null() && !v.is_boolean()) throw Expected("true, false or null");
         d.facts.trackingEnabled = v == true;
       }},
      {"idfa", [](Device d, const json& v) { d.facts.advertisingIdentifier = text(v); }},
      {"freeSpace", [](Device d, const json& v) { assign(d.facts.freeSpace, v, bytes); }},
      {"bundleIdentifier", [](Device d, const json& v) { d.facts.bundleIdentifier = text(v); }},
      {"appVersion", [](Device d, const json& v) { d.facts.appVersion = text(v); }},
      {"environment",
       [](Device d, const json& v) { assign(d.facts.environment, v, objectOfTexts, unset().environment); }},
      {"existingPaths",
       [](Device d, const json& v) { assign(d.existingPaths, v, listOfTexts<std::set<std::string>>); }},
      {"bundle", [](Device d, const json& v) { assign(d.facts.sdkBundle, v, sdkBundle); }},
  };
  return all;
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
  json facts = json::object();
  facts[fact] = value;
  return set(facts);
}

std::optional<std::string> HeadlessDevice::set(const json& facts) {
  MutexLock lock(mutex_);
  DeviceFacts changed = facts_;
  std::set<std::string> paths = existingPaths_;
  for (const auto& [fact, value] : facts.items()) {
    const auto change = changes().find(fact);
    if (change == changes().end())
      return fmt::format("There is no fact \"{}\". Expected one of {}.", fact, listed(wordsOf(changes())));
    try {
      change->second({changed, paths}, value);
    } catch (const Expected& expected) {
      return fmt::format("The fact \"{}\" cannot be {}. Expected {}.", fact, brief(value, longestValue),
                         expected.what());
    }
  }
  facts_ = std::move(changed);
  existingPaths_ = std::move(paths);
  return std::nullopt;
}

void HeadlessDevice::setScreen(double width, double height) {
  MutexLock lock(mutex_);
  facts_.screenWidth = width;
  facts_.screenHeight = height;
}

HeadlessReachability::HeadlessReachability(std::shared_ptr<DispatchQueue> mainQueue)
    : mainQueue_(std::move(mainQueue)) {}

HeadlessReachability::State HeadlessReachability::state() const {
  MutexLock lock(mutex_);
  return state_;
}

void HeadlessReachability::setState(State state) {
  {
    MutexLock lock(mutex_);
    state_ = std::move(state);
  }
  mainQueue_->async([observers = observers_] { observers->call(); });
}

std::shared_ptr<void> HeadlessReachability::observe(std::function<void()> handler) {
  return observers_->add(std::move(handler));
}

}  // namespace vantorium::headless
