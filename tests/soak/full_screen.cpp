// Ads over the whole screen: shown when they are ready and when they are not, and played to ends of every
// kind.
#include <fmt/format.h>
#include <sys/stat.h>

#include <sstream>
#include <string_view>

#include "soak/scenario.hpp"

namespace vantorium::soak {

using nlohmann::json;

namespace {

constexpr double filmLength = 30;  // seconds

bool isRewarded(const std::string& placement) { return placement == "rewarded" || placement == "game"; }

const std::vector<std::string>& campaignPlacements() {
  static const std::vector<std::string> placements{"rewarded", "interstitial", "game", "page"};
  return placements;
}

bool isCode(const Outcome& outcome, VantoriumError::Code code) {
  return outcome.error && VantoriumError::is(*outcome.error, code);
}

/// Tells one file from another that later has its path.
std::string identityOf(const std::string& path) {
  struct stat facts {};
  if (::stat(path.c_str(), &facts) != 0) return "";
  return fmt::format("{} {} {}.{}", facts.st_dev, facts.st_ino, facts.st_mtim.tv_sec, facts.st_mtim.tv_nsec);
}

}  // namespace

void Scenario::showCampaign(Dice& dice) {
  std::string placement = dice.pick(campaignPlacements());
  for (const auto& each : campaignPlacements()) {
    if (!Vantorium::isCampaignReady(placement) && !dice.chance(0.1)) placement = each;
  }
  const bool wasReady = Vantorium::isCampaignReady(placement);
  const auto outcome = application_.showCampaign(placement);
  const json screen = application_.front();
  if (screen.is_null()) {
    checkRefusal(placement, wasReady, *outcome);
    if (!wasReady) application_.precache(placement);
    return;
  }
  Shown shown = readProduct();
  if (screen["player"].is_object()) shown.source = screen["player"]["source"];
  ++shown_[placement];
  books_.owe(shown.impression(), "impression");
  checkScreen(shown);
  if (dice.chance(0.03)) return;  // left open, for whatever comes
  play(dice, placement, shown);
  expectEnd(*outcome, "showCampaign");
}

Scenario::Shown Scenario::readProduct() const {
  Shown shown;
  std::istringstream product(application_.product());
  std::string number;
  std::getline(std::getline(std::getline(product, number, '|'), shown.film, '|'), shown.page);
  shown.number = std::stoll(number);
  return shown;
}

void Scenario::checkRefusal(const std::string& placement, bool wasReady, const Outcome& outcome) {
  if (!outcome.hasEnded) {
    books_.violate("nothing shown, nothing said", placement);
  } else if (wasReady && isCode(outcome, VantoriumError::noPrecachedDataToShowCode)) {
    books_.violate("ready, then nothing to show", placement);
  } else if (isCode(outcome, VantoriumError::functionInProgressCode) && !application_.isPreparingPopup()) {
    books_.violate("said to show an ad, while none is", placement);
  }
}

/// The film and the page must be on disk, and be those of this campaign.
void Scenario::checkScreen(const Shown& shown) {
  if (!shown.film.empty()) checkFile(shown.source, shown.film, "film");
  const auto failed = failedFilms_.find(shown.film);
  if (failed != failedFilms_.end() && shown.number > failed->second.latest && !shown.source.empty() &&
      identityOf(shown.source) == failed->second.file)
    books_.violate("film that failed, shared again", shown.film);
  if (shown.page.empty()) return;
  constexpr std::size_t scheme = std::string_view("file://").size();
  const std::string& page = application_.page();
  checkFile(page.size() > scheme ? page.substr(scheme) : "", shown.page, "page");
}

void Scenario::play(Dice& dice, const std::string& placement, const Shown& shown) {
  if (shown.film.empty()) {
    playGame(dice, placement, shown);
  } else if (!playFilm(dice, placement, shown)) {
    return;
  }
  leavePage(dice, shown);
}

void Scenario::seeToTheEnd(const std::string& placement, const Shown& shown) {
  books_.owe(shown.impression(), "finished");
  if (isRewarded(placement)) books_.oweReward(shown.number, placement);
}

/// Plays the film to an end of some kind; whether the end card follows.
bool Scenario::playFilm(Dice& dice, const std::string& placement, const Shown& shown) {
  Host& host = application_.host();
  headless::moveVideo(host, 1, filmLength);
  application_.advance(dice.between(0, 2));
  const double choice = dice.between(0, 1);
  if (choice < 0.08) {
    // Films that are fetched once have a number for a name, and nobody to share them with.
    if (shown.film.find('-') != std::string::npos)
      failedFilms_[shown.film] = {.latest = service_.tally()["handedOut"], .file = identityOf(shown.source)};
    headless::endVideo(host, headless::VideoEnd::failed, "the film cannot be played");
    return false;
  }
  if (choice < 0.35 && !isRewarded(placement)) {
    headless::moveVideo(host, 6, filmLength);
    if (const auto error = headless::tap(host, "skipVideoButton"))
      books_.violate("a film that cannot be skipped", error->localizedDescription());
    books_.owe(shown.impression(), "finished");
    return true;
  }
  const bool breaksOff = dice.chance(0.2);
  headless::endVideo(host, breaksOff ? headless::VideoEnd::failedToEnd : headless::VideoEnd::ended);
  seeToTheEnd(placement, shown);
  return true;
}

void Scenario::playGame(Dice& dice, const std::string& placement, const Shown& shown) {
  application_.advance(dice.between(0, 40));
  if (dice.chance(0.6)) {
    headless::navigate(application_.host(), "reportfinished://done");
    seeToTheEnd(placement, shown);
  }
}

void Scenario::leavePage(Dice& dice, const Shown& shown) {
  Host& host = application_.host();
  application_.pump();
  if (dice.chance(0.1)) headless::failPage(host, "the page cannot be shown");
  if (dice.chance(0.05)) headless::navigate(host, "replay://again");
  if (dice.chance(0.35)) {
    headless::navigate(host, "reportclick://store");
    books_.owe(shown.impression(), "click");
    books_.oweClick();
    headless::finishStore(host);
  } else if (!dice.chance(0.3) || headless::tap(host, "closeWebViewButton")) {
    headless::navigate(host, "closead://done");
  }
}

void Scenario::expectEnd(const Outcome& outcome, const std::string& call) {
  application_.pump();
  if (!outcome.hasEnded) books_.violate("the ad was closed, its completion was not called", call);
  if (!application_.front().is_null()) books_.violate("the ad was closed and is there", call);
}

/// Closes what an earlier round left open, or what came up late.
void Scenario::closeFront() {
  application_.pump();
  for (int screens = 0; screens < 3 && !application_.front().is_null(); ++screens) {
    headless::navigate(application_.host(), "closead://done");
    application_.pump();
  }
}

void Scenario::showPopup(Dice& dice) {
  if (!application_.hasPopup()) return application_.precachePopup();
  constexpr double patience = 1;  // seconds
  const auto outcome = application_.showPopup("popup");
  application_.runUntil([&] { return outcome->hasEnded || !application_.front().is_null(); }, patience);
  if (application_.front().is_null() || outcome->hasEnded) return;
  ++shown_["popup"];
  Host& host = application_.host();
  if (dice.chance(0.1)) headless::failPage(host, "the page cannot be shown");
  if (dice.chance(0.4)) {
    headless::navigate(host, "click://");
    books_.oweUnnamed("offer", "click");
    books_.oweClick();
  } else if (dice.chance(0.2)) {
    headless::tap(host, "back");
  } else {
    headless::navigate(host, "closead://done");
  }
  expectEnd(*outcome, "showRewardablePopup");
}

void Scenario::showWall(Dice& dice) {
  const auto outcome = application_.showWall("wall");
  if (application_.front().is_null()) return checkRefusal("wall", false, *outcome);
  ++shown_["wall"];
  Host& host = application_.host();
  const double choice = dice.between(0, 1);
  if (choice < 0.2) {
    headless::failPage(host, "the wall cannot be reached");
  } else if (choice < 0.6) {
    headless::navigate(host, "click://" + service_.baseURL() + "/made/click/wall");
    books_.oweClick();
  } else {
    headless::navigate(host, "closead://done");
  }
  expectEnd(*outcome, "showOfferWall");
}

}  // namespace vantorium::soak
