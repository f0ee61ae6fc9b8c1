#include "torture/scenarios.hpp"

namespace vantorium::torture {

namespace {

using Completion = Vantorium::Completion;

bool nothing(Stage&) { return true; }

bool configure(Stage& stage) {
  return stage.call("configure",
                    [](Completion completion) { Vantorium::configure("app", std::move(completion)); });
}

bool precache(Stage& stage, const std::string& placement) {
  const bool isDone = stage.call("precacheCampaigns", [&](Completion completion) {
    Vantorium::precacheCampaigns(placement, std::move(completion));
  });
  if (isDone && !Vantorium::isCampaignReady(placement)) stage.note("precached with success, but not ready");
  return isDone;
}

using Play = std::optional<Error> (*)(Host& host);

/// Shows the placement's ad, has `play` do what its user does, and closes it.
bool show(Stage& stage, const std::string& placement, Play play) {
  const auto call = stage.begin("showCampaign", [&](Completion completion) {
    Vantorium::showCampaign(placement, std::move(completion));
  });
  bool isPlayed = false;
  if (stage.isShown(call)) {
    isPlayed = stage.act("playing", [&] { return play(stage.host()); });
    stage.meetWhatIsShown();
    stage.act("closing", [&] { return headless::navigate(stage.host(), "closead://x"); });
  }
  const bool isDone = stage.end(call);
  if (isDone && isPlayed) stage.expectReward();
  return isDone;
}

std::optional<Error> seeFilm(Host& host) {
  if (auto error = headless::moveVideo(host, 0.2, 12)) return error;
  if (auto error = headless::advance(host, 0.2)) return error;  // its end card is loaded meanwhile
  return headless::endVideo(host, headless::VideoEnd::ended);
}

std::optional<Error> playGame(Host& host) { return headless::navigate(host, "reportfinished://x"); }

bool video(Stage& stage) {
  return precache(stage, "rewarded-main") && show(stage, "rewarded-main", &seeFilm);
}

bool playable(Stage& stage) {
  return precache(stage, "playable-rewarded") && show(stage, "playable-rewarded", &playGame);
}

bool native(Stage& stage) {
  Vantorium::NativeAds ads;
  const bool isDone = stage.fetchNativeAds("native-video", ads);
  if (isDone && ads.empty()) stage.note("precached with success, but no ad");
  for (const auto& ad : ads) {
    const auto meet = [&](const std::string& what, const std::optional<std::string>& path) {
      if (path) stage.meet(what, *path);
      if (!path && isDone) stage.note("precached with success, but without its " + what);
    };
    meet("icon", ad->appIconFilePath);
    for (const auto& asset : ad->assets) meet(asset->type, asset->filePath);
    const auto view = headless::makeNativeAdView(stage.host(), 300, 400);
    const bool isFilled = stage.call("populateNativeAdView", [&](Completion completion) {
      Vantorium::populateNativeAdView(view, ad, std::move(completion));
    });
    if (!isFilled) return false;
    stage.act("seeing", [&] { return headless::setSeen(stage.host(), view, true); });
    stage.act("looking away", [&] { return headless::setSeen(stage.host(), view, false); });
  }
  return isDone;
}

bool popup(Stage& stage) {
  const bool hasTemplate = stage.call("precacheRewardablePopupTemplate", [](Completion completion) {
    Vantorium::precacheRewardablePopupTemplate(std::move(completion));
  });
  if (!hasTemplate) return false;
  const auto call = stage.begin("showRewardablePopup", [](Completion completion) {
    Vantorium::showRewardablePopup("offer-main", std::move(completion));
  });
  if (stage.isShown(call)) {
    stage.meetWhatIsShown();
    stage.act("closing", [&] { return headless::navigate(stage.host(), "closead://x"); });
  }
  return stage.end(call);
}

/// All that can be under way is, when the application ends; and then it starts again.
bool relaunch(Stage& stage) {
  for (const char* const placement : {"rewarded-main", "playable-rewarded"}) {
    stage.begin("precacheCampaigns of the past", [&](Completion completion) {
      Vantorium::precacheCampaigns(placement, std::move(completion));
    });
  }
  stage.relaunch();
  return configure(stage) && precache(stage, "interstitial-main");
}

bool autoCaching(Stage& stage) {
  Vantorium::setIsConfigured(false);
  Vantorium::setAutoCaching(true);
  const bool isDone = configure(stage);
  if (isDone) stage.expectAutoCaching({"rewarded-main", "interstitial-main", "playable-rewarded"});
  Vantorium::setAutoCaching(false);
  return isDone;
}

}  // namespace

const std::vector<Scenario>& scenarios() {
  static const std::vector<Scenario> all = {
      {"start", &nothing, &configure},  {"video", &configure, &video}, {"playable", &configure, &playable},
      {"native", &configure, &native},  {"popup", &configure, &popup}, {"relaunch", &configure, &relaunch},
      {"auto", &nothing, &autoCaching},
  };
  return all;
}

}  // namespace vantorium::torture
