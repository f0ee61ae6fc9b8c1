#include "soak/scenario.hpp"

namespace vantorium::soak {

using nlohmann::json;

std::filesystem::path cachesOf(const Options& options) { return options.home / "caches"; }

Scenario::Scenario(const Options& options)
    : options_(options), service_(options_), application_(options_, service_.baseURL(), books_) {}

Scenario::~Scenario() = default;

void Scenario::playRound() {
  ++books_.round;
  Dice dice(options_.seed, books_.round);
  changeWeather(dice);
  application_.configureIfNeeded();
  closeFront();
  const double choice = dice.between(0, 1);
  if (choice < 0.60) {
    showCampaign(dice);
  } else if (choice < 0.70) {
    showPopup(dice);
  } else if (choice < 0.75) {
    showWall(dice);
  } else if (choice < 0.83) {
    fetchNativeAds(dice);
  } else if (choice < 0.94) {
    showNativeAd(dice);
  } else if (choice < 0.97) {
    reportNativeAd(dice);
  } else {
    application_.canView("rewarded");
  }
  // Mostly answers come before the next round, as they would in life; sometimes it does not wait for them.
  constexpr double moment = 0.05;  // seconds
  if (dice.chance(0.7)) application_.runUntil([this] { return application_.calls().open().empty(); }, moment);
}

void Scenario::end() {
  if (samples_.empty() || samples_.back().round != round()) rest();
  application_.stop();
}

json Scenario::totals() {
  const json tally = service_.tally();
  json totals{{"calls", application_.calls().made()},
              {"completions", application_.calls().answered()},
              {"delegate calls", application_.delegateCalls()},
              {"reports due", books_.reports()},
              {"rewards", books_.rewards()},
              {"reports and rewards lost", books_.lost()},
              {"reports and rewards doubled", books_.doubled()}};
  totals["shown"] = shown_;
  totals["launches"] = launch_;
  for (const char* name :
       {"requests", "struck", "violations", "firstViolations", "longestTarget", "handedOut"})
    totals["service"][name] = tally[name];
  return totals;
}

}  // namespace vantorium::soak
