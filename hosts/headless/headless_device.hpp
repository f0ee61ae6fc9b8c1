#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include <vantorium/dispatch_queue.hpp>

#include "platform/foundation/device_information.hpp"
#include "platform/foundation/observers.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "platform/net/reachability_probe.hpp"

namespace vantorium::headless {

/// The facts of a device that is whatever the script says. Any thread.
class HeadlessDevice : public DeviceInformation {
 public:
  HeadlessDevice();

  DeviceFacts facts() const override EXCLUDES(mutex_);
  bool fileExists(const std::string& path) const override EXCLUDES(mutex_);
  /// Always refused: a script must not leave files on the machine that plays it.
  bool createFile(const std::string& path) override;

  /// Sets one fact by its name in scripts: systemVersion, model, hardware, batteryState, batteryLevel,
  /// volume, timezone, languages, locale, carrier, trackingEnabled, idfa, freeSpace, bundleIdentifier,
  /// appVersion, environment, existingPaths, bundle (of the SDK itself: an object,
  /// "CFBundleShortVersionString" in it or not); null takes it away. Returns what is wrong with name or
  /// value and what was expected, or nothing.
  std::optional<std::string> set(const std::string& fact, const nlohmann::json& value) EXCLUDES(mutex_);
  /// Sets all facts of an object, or none of them when something is wrong with one.
  std::optional<std::string> set(const nlohmann::json& facts) EXCLUDES(mutex_);

  /// The size of the screen in points.
  void setScreen(double width, double height) EXCLUDES(mutex_);

 private:
  mutable Mutex mutex_;
  DeviceFacts facts_ GUARDED_BY(mutex_);
  std::set<std::string> existingPaths_ GUARDED_BY(mutex_);
};

/// The network as the script says it is. Starts reachable over WiFi. Any thread.
class HeadlessReachability {
 public:
  /// Changes are told on `mainQueue`.
  explicit HeadlessReachability(std::shared_ptr<DispatchQueue> mainQueue);

  struct State {
    std::optional<std::uint32_t> flags = reachability_flags::reachable;
    std::optional<std::string> radio = {};
    bool reachableOnWWAN = true;
    bool isRunningOnDevice = true;
  };
  State state() const EXCLUDES(mutex_);
  void setState(State state) EXCLUDES(mutex_);
  /// Calls `handler` on the main queue after each `setState`, as long as the token is kept.
  [[nodiscard]] std::shared_ptr<void> observe(std::function<void()> handler);

 private:
  const std::shared_ptr<DispatchQueue> mainQueue_;
  const std::shared_ptr<Observers> observers_ = std::make_shared<Observers>();
  mutable Mutex mutex_;
  State state_ GUARDED_BY(mutex_);
};

}  // namespace vantorium::headless
