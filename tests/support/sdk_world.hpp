#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "facade/sdk.hpp"
#include "hosts/headless/headless_host.hpp"
#include "hosts/headless/host_lease.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "sandbox/server.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium::testing {

/// Notes what it is told, one line each.
class RecordingDelegate : public VantoriumDelegate {
 public:
  explicit RecordingDelegate(std::vector<std::string>& lines) : lines_(lines) {}

  std::optional<DelegateMethod> silent;  ///< the one method it does not answer

  bool respondsTo(DelegateMethod method) const override { return silent != method; }
  void didReceiveReward(const std::string& placement, std::int64_t amount) override {
    lines_.push_back(fmt::format("didReceiveReward {} {}", placement, amount));
  }
  void didPrecache(const std::string& placement) override { lines_.push_back("didPrecache " + placement); }
  void didFailPrecache(const std::string& placement, const std::optional<Error>& error) override {
    lines_.push_back(fmt::format("didFailPrecache {} {}", placement, error ? error->code() : 0));
  }
  void didReceiveClick(const std::string& placement) override {
    lines_.push_back("didReceiveClick " + placement);
  }
  void didConfigure() override { lines_.push_back("didConfigure"); }
  void didFailConfigure(const std::optional<Error>& error) override {
    lines_.push_back(fmt::format("didFailConfigure {}", error ? error->localizedDescription() : ""));
  }

 private:
  std::vector<std::string>& lines_;
};

/// Wakes the main loop of the moment from any thread, so that who waits on it looks again.
class Bell {
 public:
  void hang(std::shared_ptr<DispatchQueue> loop) EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    loop_ = std::move(loop);
  }
  void ring() EXCLUDES(mutex_) {
    std::shared_ptr<DispatchQueue> loop;
    {
      const MutexLock lock(mutex_);
      loop = loop_;
    }
    if (loop) loop->async([] {});
  }

 private:
  Mutex mutex_;
  std::shared_ptr<DispatchQueue> loop_ GUARDED_BY(mutex_);
};

/// An application on a headless host, an ad service and the whole SDK between the two.
struct SdkWorld {
  SdkWorld() {
    server.start();
    restart();
  }
  ~SdkWorld() { end(); }

  /// Ends the SDK and the process it pretends to be in, and starts the next one on the same home.
  void restart() {
    if (sdk) end();
    host = std::make_shared<headless::Host>(options());
    bell.hang(host->mainQueue());
    lease.emplace(host);
    sdk = Sdk::make(lease->lend());
    ServiceConfiguration configuration;
    configuration.baseURL = server.baseURL();
    configuration.widgetURL = server.baseURL();
    sdk->setServiceConfiguration(configuration);
    sdk->context()->setDelegate(delegate);
  }

  void end() {
    sdk->shutdown();
    sdk.reset();
    EXPECT_TRUE(lease->awaitReturn()) << "something of the SDK lives on";
  }

  headless::Host::Options options() const {
    return {.home = home.path(), .hasReachabilityMonitor = hasMonitor};
  }

  /// A completion that adds "name true" or "name false text" to `lines`.
  auto noting(const std::string& name) {
    return [this, name](bool success, const std::optional<Error>& error) {
      lines.push_back(
          fmt::format("{} {}{}", name, success, error ? " " + error->localizedDescription() : ""));
    };
  }
  bool has(const std::string& line) const { return count(line) > 0; }
  std::ptrdiff_t count(const std::string& line) const { return std::count(lines.begin(), lines.end(), line); }
  /// Runs the main loop until the line is there.
  bool await(const std::string& line) {
    return host->loop().runUntil([&] { return has(line); });
  }
  bool awaitEvents(const std::string& kind, std::size_t number = 1) {
    return host->loop().runUntil([&] { return events(kind) >= number; });
  }

  bool configure(bool autoCaching = false) {
    sdk->context()->updateFlags([&](SdkContext::Flags& flags) { flags.autoCaching = autoCaching; });
    sdk->configure("app", std::nullopt, nullptr, noting("configure"));
    return await("configure true");
  }
  bool precache(const std::string& placement) {
    const std::string name = "precache " + placement;
    const auto before = count(name + " true");
    sdk->precacheCampaigns(placement, nullptr, noting(name));
    return host->loop().runUntil([&] { return count(name + " true") > before; });
  }
  void show(const std::string& placement) { sdk->showCampaign(placement, std::nullopt, noting("show")); }
  /// Configures, precaches and shows; whether a screen came up.
  bool showing(const std::string& placement) {
    if (!configure() || !precache(placement)) return false;
    show(placement);
    host->loop().runPending();
    return !host->snapshot().is_null();
  }

  std::size_t requests(const std::string& prefix) const {
    std::size_t found = 0;
    for (const auto& request : server.requests())
      found += request["target"].get<std::string>().starts_with(prefix);
    return found;
  }
  std::size_t events(const std::string& kind) const {
    std::size_t found = 0;
    for (const auto& event : server.events()) found += event["kind"] == kind;
    return found;
  }
  /// The part of the front screen's snapshot that the outlet names.
  nlohmann::json view(const std::string& outlet) {
    const nlohmann::json snapshot = host->snapshot();
    for (const auto& each : snapshot["views"]) {
      if (each["outlet"] == outlet) return each;
    }
    return nullptr;
  }
  bool isHidden(const std::string& outlet) { return view(outlet)["hidden"]; }

  static constexpr const char* rewarded = "rewarded-main";
  static constexpr const char* interstitial = "interstitial-main";

  TemporaryDirectory home;
  bool hasMonitor = true;
  Bell bell;        ///< rings when the service records something
  Mutex answering;  ///< while a test holds it, the service answers nothing
  sandbox::Server server{sandbox::Options{.onRecord = [this](const nlohmann::json&) {
    bell.ring();
    const MutexLock turn(answering);
  }}};
  std::vector<std::string> lines;
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>(lines);
  std::shared_ptr<headless::Host> host;
  std::optional<headless::HostLease> lease;
  std::shared_ptr<Sdk> sdk;
};

}  // namespace vantorium::testing
