#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "hosts/headless/headless_application.hpp"
#include "hosts/headless/headless_device.hpp"
#include "hosts/headless/main_loop.hpp"
#include "hosts/headless/scripted.hpp"
#include "hosts/headless/view_tree.hpp"
#include "platform/host.hpp"

namespace vantorium::headless {

/// A host without screen, store or player: the script is the user, the page, the film and the device. What
/// the SDK does to the machine is told as events, JSON objects of one line each.
///
/// The thread that makes the host and runs its loop is the main thread; the handles below belong to it.
class Host : public vantorium::Host {
 public:
  struct Options {
    /// Holds settings and caches: two hosts with the same home are two launches of one installation.
    std::filesystem::path home;
    ClockKind clock = ClockKind::virtualTime;
    /// Without a monitor, nothing can be said about reachability.
    bool hasReachabilityMonitor = true;
  };
  explicit Host(Options options);

  // What the SDK asks.
  std::shared_ptr<DispatchQueue> mainQueue() override { return loop_; }
  Clock& clock() override { return *loop_; }
  DeviceInformation& device() override { return device_; }
  Directories directories() const override;
  std::unique_ptr<ReachabilityProbe> makeReachabilityProbe() override;
  void print(std::string_view line) override;
  ui::Application& application() override { return application_; }
  WebEngineGeneration webEngineGeneration() const override;
  std::shared_ptr<WebEngine> makeWebEngine() override;
  std::shared_ptr<MediaPlayer> makePlayer(const std::string& source) override;
  std::shared_ptr<ui::StoreProductViewController> makeStoreProductViewController() override;

  // Time.
  MainLoop& loop() { return *loop_; }
  bool hasVirtualTime() const { return options_.clock == ClockKind::virtualTime; }
  void advance(double seconds) { loop_->advance(Seconds{seconds}); }
  /// Runs the loop until an event (looked at once each, oldest first, from the last one found on) has all of
  /// the given fields; gives that event, or null when the timeout of real time passed.
  nlohmann::json awaitEvent(const nlohmann::json& fields, double timeoutSeconds = 30);

  // What happened.
  /// All events so far, in order, but for those that were taken. Any thread.
  std::vector<nlohmann::json> events() const EXCLUDES(eventsMutex_);
  /// Those since the last call, or since the start. They are forgotten, so that a host may run for long.
  std::vector<nlohmann::json> takeEvents() EXCLUDES(eventsMutex_);
  /// Adds an event of the script's own making to the stream. Any thread.
  void tell(nlohmann::json event) EXCLUDES(eventsMutex_);
  /// Called with every event, on the thread that caused it. Set it before the host is used.
  void setEventObserver(EventSink observer) { observer_ = std::move(observer); }

  // The page, film, user and store of the front screen. Each returns what prevented it, or nothing.
  using Refusal = headless::Refusal;
  Refusal navigate(const std::string& url, WebViewNavigationType type = WebViewNavigationType::linkClicked);
  Refusal failPage(const std::string& text);
  Refusal moveVideo(double position, double duration);
  /// "ended", "failedToEnd" or "failed" with the error's text.
  Refusal videoEvent(const std::string& event, const std::string& error = {});
  Refusal setVideoSize(double width, double height);
  /// Taps the control that the outlet names, or goes "back". A hidden control cannot be tapped.
  Refusal tap(const std::string& control);
  Refusal finishStore();

  // The device.
  /// Changes the size of the screen, in points, and of the application's window with it.
  void setScreen(double width, double height);
  /// Whether a reachability probe can be made from now on; the SDK makes its own at its first use.
  void setHasReachabilityMonitor(bool hasMonitor) { hasReachabilityMonitor_ = hasMonitor; }
  HeadlessDevice& deviceFacts() { return device_; }
  HeadlessReachability& reachability() { return *reachability_; }
  HeadlessApplication& headlessApplication() { return application_; }

  /// The front screen as JSON: screen, rotation, frame, views, web, player; null when no ad is shown.
  nlohmann::json snapshot();
  std::shared_ptr<ScriptedPlayer> frontPlayer();
  /// What is said when there is none.
  static constexpr const char* noVideo =
      "No screen with a video is in front. Expected one: show an ad with a video first.";
  std::shared_ptr<ScriptedWebEngine> frontWebEngine();

 private:
  EventSink sink();

  const Options options_;
  const std::shared_ptr<MainLoop> loop_;
  std::atomic<bool> hasReachabilityMonitor_;
  HeadlessDevice device_;
  const std::shared_ptr<HeadlessReachability> reachability_ = std::make_shared<HeadlessReachability>(loop_);
  EventSink observer_;
  mutable Mutex eventsMutex_;
  std::vector<nlohmann::json> events_ GUARDED_BY(eventsMutex_);
  std::size_t awaited_ = 0;
  HeadlessApplication application_;
};

}  // namespace vantorium::headless
