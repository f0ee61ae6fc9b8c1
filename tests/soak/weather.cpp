// What an application cannot choose: time, the network, the service's bad days, cleaners, and its own end.
#include <algorithm>
#include <system_error>

#include "soak/scenario.hpp"

namespace vantorium::soak {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

/// Faults that end what they strike soon, one way or another.
const std::vector<json>& anyFaults() {
  static const std::vector<json> faults{{{"fault", "connectionReset"}},
                                        {{"fault", "serverCloses"}},
                                        {{"fault", "delay"}, {"seconds", 0.05}},
                                        {{"fault", "delay"}, {"seconds", 0.4}},
                                        {{"fault", "notFound"}},
                                        {{"fault", "status"}, {"status", 503}},
                                        {{"fault", "status"}, {"status", 204}},
                                        {{"fault", "notJSON"}},
                                        {{"fault", "bodyTruncated"}},
                                        {{"fault", "bodyCutShort"}},
                                        {{"fault", "emptyBody"}},
                                        {{"fault", "redirectLoop"}},
                                        {{"fault", "noFill"}},
                                        {{"fault", "serviceError"}},
                                        {{"fault", "successWithStatus500"}},
                                        {{"fault", "notUTF8"}}};
  return faults;
}

const std::vector<std::string>& anyPath() {
  static const std::vector<std::string> paths{
      "/api/campaigns",    "/api/campaigns",    "/made/film/",        "/made/film/",     "/made/page/",
      "/made/page/",       "/made/games/",      "/made/games/",       "/made/asset/",    "/made/icon/",
      "/api/sdk/native",   "/api/offers/",      "/api/rewardedPopup", "/api/canReward/", "/api/canReward/",
      "/api/impressions/", "/api/impressions/", "/api/init",          "/api/logError"};
  return paths;
}

}  // namespace

void Scenario::changeWeather(Dice& dice) {
  if (dice.chance(0.15)) setFaults(dice);
  if (offlineUntil_ > 0 && books_.round >= offlineUntil_) {
    offlineUntil_ = 0;
    application_.setOnline(true);
  } else if (dice.chance(0.02)) {
    offlineUntil_ = books_.round + 1 + static_cast<int>(dice.below(5));
    application_.setOnline(false);
  }
  if (dice.chance(0.004)) beginOutage(dice);
  books_.isOutage = std::chrono::steady_clock::now() < outageUntil_;
  if (isYoung() && dice.chance(0.02)) restart(dice);
  if (dice.chance(0.05)) deleteFiles(dice);
  passTime(dice);
}

void Scenario::setFaults(Dice& dice) {
  faults_ = json::array();
  const std::size_t number = dice.below(4);
  for (std::size_t at = 0; at < number; ++at) {
    json fault = dice.pick(anyFaults());
    fault["path"] = dice.pick(anyPath());
    fault["times"] = 1 + dice.below(4);
    faults_.push_back(std::move(fault));
  }
  service_.setFaults(faults_);
}

// What is under way is waited for: nobody could tell what became of it.
void Scenario::beginOutage(Dice& dice) {
  poll([this] { return books_.settleReports(service_.tally(books_.owedImpressions())); }, "report lost");
  const double seconds = dice.between(0.05, 0.3);
  service_.beginOutage(seconds);
  outageUntil_ =
      std::chrono::steady_clock::now() +
      std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(seconds));
}

void Scenario::passTime(Dice& dice) {
  if (dice.chance(0.005)) {
    application_.advance(dice.between(3600, 4 * 3600));
  } else if (dice.chance(0.8)) {
    application_.advance(dice.between(0, 5));
  }
}

// As a cleaner does, or a user: one file, a folder, or all files.
void Scenario::deleteFiles(Dice& dice) {
  std::vector<fs::path> found;
  std::error_code ignored;
  for (fs::recursive_directory_iterator each(cachesOf(options_), ignored), end; each != end;
       each.increment(ignored))
    found.push_back(each->path());
  if (found.empty()) return;
  std::ranges::sort(found);
  if (isYoung() && dice.chance(0.1)) {
    for (const auto& path : found) {
      if (fs::is_regular_file(path, ignored)) fs::remove(path, ignored);
    }
  } else {
    fs::remove_all(dice.pick(found), ignored);
  }
}

// Either would hide what grows: after a tenth of the rounds comes one long launch, whose cache is never
// emptied.
bool Scenario::isYoung() const { return round() <= options_.rounds / 10; }

void Scenario::restart(Dice& dice) {
  if (dice.chance(0.5)) dropNativeAds(0);
  application_.stop();
  if (dice.chance(0.3)) deleteFiles(dice);
  application_.start();
  ++launch_;
  application_.configureIfNeeded();
  if (dice.chance(0.7)) application_.runUntil([] { return Vantorium::isConfigured(); }, 0.5);
}

}  // namespace vantorium::soak
