#pragma once

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include <vantorium/headless.hpp>
#include <vantorium/vantorium.hpp>

#include "soak/books.hpp"
#include "soak/calls.hpp"
#include "soak/options.hpp"

namespace vantorium::soak {

/// How a call to show something has ended so far.
struct Outcome {
  bool hasEnded = false;
  bool success = false;
  std::optional<Error> error;
};

/// An application with ads on a headless host: the SDK, its delegate, and every call's completion counted.
/// Main thread.
class Application {
 public:
  Application(const Options& options, std::string baseURL, Books& books);
  ~Application();
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  Host& host() { return *host_; }
  Calls& calls() { return *calls_; }

  /// Begins or ends a launch of the application. A launch ends with every call answered.
  void start();
  void stop();
  /// Configures unless that is done or under way.
  void configureIfNeeded();

  /// Runs the main queue until nothing is due, and takes in what happened meanwhile.
  void pump();
  /// Runs the main queue until `done`, at most so many seconds; whether it is.
  bool runUntil(const std::function<bool()>& done, double seconds);
  void advance(double seconds);
  void setOnline(bool isOnline);
  bool isOnline() const { return isOnline_; }

  void precache(const std::string& placement);
  void canView(const std::string& placement);
  void precachePopup();
  bool hasPopup() const { return hasPopup_; }
  /// Whether a popup may still come up; no other ad can until it has.
  bool isPreparingPopup() const;
  std::shared_ptr<Outcome> showCampaign(const std::string& placement);
  std::shared_ptr<Outcome> showPopup(const std::string& placement);
  std::shared_ptr<Outcome> showWall(const std::string& placement);

  /// The screen in front, as JSON; null without one.
  nlohmann::json front() { return nlohmann::json::parse(headless::snapshot(*host_)); }
  /// Of the screen that was presented last: the store's product that it loaded, and the page. Empty when
  /// there was none.
  const std::string& product() const { return product_; }
  const std::string& page() const { return page_; }
  /// Forgets both, before another screen is shown.
  void forgetScreen();

  const std::map<std::string, std::uint64_t>& delegateCalls() const { return delegateCalls_; }

 private:
  class Delegate;

  Vantorium::Completion counted(std::string call, Vantorium::Completion then = {});
  Vantorium::Completion noted(std::string call, const std::shared_ptr<Outcome>& outcome);
  void takeEvents();
  void takeIn(const nlohmann::json& event);

  const std::string baseURL_;
  Books& books_;
  const std::shared_ptr<Host> host_;
  const std::shared_ptr<Calls> calls_ = std::make_shared<Calls>();
  std::shared_ptr<Delegate> delegate_;
  std::map<std::string, std::uint64_t> delegateCalls_;
  bool isRunning_ = false;
  bool isOnline_ = true;
  bool hasPopup_ = false;
  std::string product_;
  std::string page_;
};

}  // namespace vantorium::soak
