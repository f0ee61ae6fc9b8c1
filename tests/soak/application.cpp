#include "soak/application.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace vantorium::soak {

using nlohmann::json;

namespace {

constexpr const char* popupCall = "showRewardablePopup";

}  // namespace

/// Counts what it hears, and tells the books of rewards and clicks.
class Application::Delegate : public VantoriumDelegate {
 public:
  Delegate(Books& books, std::map<std::string, std::uint64_t>& heard) : books_(books), heard_(heard) {}

  void didReceiveReward(const std::string& placement, std::int64_t amount) override {
    ++heard_["didReceiveReward"];
    books_.receiveReward(amount, placement);
  }
  void didReceiveClick(const std::string& /*placement*/) override {
    ++heard_["didReceiveClick"];
    books_.receiveClick();
  }
  void didPrecache(const std::string& /*placement*/) override { ++heard_["didPrecache"]; }
  void didFailPrecache(const std::string& /*placement*/, const std::optional<Error>& /*error*/) override {
    ++heard_["didFailPrecache"];
  }
  void didConfigure() override { ++heard_["didConfigure"]; }
  void didFailConfigure(const std::optional<Error>& /*error*/) override { ++heard_["didFailConfigure"]; }

 private:
  Books& books_;
  std::map<std::string, std::uint64_t>& heard_;
};

Application::Application(const Options& options, std::string baseURL, Books& books)
    : baseURL_(std::move(baseURL)),
      books_(books),
      host_(headless::makeHost({.home = options.home})),
      delegate_(std::make_shared<Delegate>(books_, delegateCalls_)) {
  if (!host_) throw std::runtime_error("there is no host: see above");
  start();
}

Application::~Application() {
  if (isRunning_) stop();
}

void Application::start() {
  auto error = Vantorium::setHost(host_);
  if (!error) error = Vantorium::setDeveloperSettings({.baseURL = baseURL_, .widgetURL = baseURL_});
  if (error) throw std::runtime_error(error->localizedDescription());
  Vantorium::setDelegate(delegate_);
  isRunning_ = true;
  hasPopup_ = false;
}

void Application::stop() {
  constexpr double patience = 10;  // seconds
  books_.excuse();
  Vantorium::shutdown();
  isRunning_ = false;
  if (!runUntil([this] { return calls_->open().empty(); }, patience)) {
    for (const auto& call : calls_->open()) books_.violate("completion lost", call + ", at shutdown");
    calls_->forgetOpen();
  }
  pump();
  books_.closeClicks();
}

void Application::configureIfNeeded() {
  if (Vantorium::isConfigured() || Vantorium::isConfiguring()) return;
  Vantorium::configure("soak", Parameters{{Vantorium::userIDKey, "somebody"}}, counted("configure"));
}

void Application::pump() { advance(0); }

bool Application::runUntil(const std::function<bool()>& done, double seconds) {
  const bool isDone = headless::runUntil(*host_, done, seconds);
  takeEvents();
  return isDone;
}

void Application::advance(double seconds) {
  headless::advance(*host_, seconds);
  takeEvents();
}

void Application::setOnline(bool isOnline) {
  isOnline_ = isOnline;
  headless::setOnline(*host_, isOnline);
}

Vantorium::Completion Application::counted(std::string call, Vantorium::Completion then) {
  return calls_->expect(std::move(call), std::move(then));
}

Vantorium::Completion Application::noted(std::string call, const std::shared_ptr<Outcome>& outcome) {
  return counted(std::move(call), [outcome](bool success, std::optional<Error> error) {
    *outcome = {.hasEnded = true, .success = success, .error = std::move(error)};
  });
}

void Application::precache(const std::string& placement) {
  Vantorium::precacheCampaigns(placement, counted("precacheCampaigns"));
}

void Application::canView(const std::string& placement) {
  Vantorium::canView(placement, DispatchQueue::serial("soak"), counted("canView"));
}

void Application::precachePopup() {
  Vantorium::precacheRewardablePopupTemplate(
      counted("precacheRewardablePopupTemplate",
              [this](bool success, const auto&) { hasPopup_ = hasPopup_ || success; }));
}

bool Application::isPreparingPopup() const {
  const auto open = calls_->open();
  return std::ranges::find(open, popupCall) != open.end();
}

std::shared_ptr<Outcome> Application::showCampaign(const std::string& placement) {
  auto outcome = std::make_shared<Outcome>();
  forgetScreen();
  Vantorium::showCampaign(placement, noted("showCampaign", outcome));
  pump();
  return outcome;
}

std::shared_ptr<Outcome> Application::showPopup(const std::string& placement) {
  auto outcome = std::make_shared<Outcome>();
  forgetScreen();
  Vantorium::showRewardablePopup(placement, noted(popupCall, outcome));
  pump();
  return outcome;
}

std::shared_ptr<Outcome> Application::showWall(const std::string& placement) {
  auto outcome = std::make_shared<Outcome>();
  forgetScreen();
  Vantorium::showOfferWall(placement, noted("showOfferWall", outcome));
  pump();
  return outcome;
}

void Application::forgetScreen() {
  takeEvents();
  product_.clear();
  page_.clear();
}

void Application::takeEvents() {
  for (const auto& line : headless::takeEvents(*host_)) takeIn(json::parse(line));
}

void Application::takeIn(const json& event) {
  const std::string kind = event["event"];
  if (kind == "presented" && event["screen"] == "RewardablePopupVC") books_.oweUnnamed("offer", "impression");
  if (kind == "storeSheet" && event["action"] == "load") product_ = event["product"];
  if (kind == "load" && event["kind"] == "file") page_ = event["url"];
}

}  // namespace vantorium::soak
