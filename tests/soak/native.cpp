// Native ads: fetched, shown in views of the application's own or reported by itself, and dropped.
#include <fmt/format.h>

#include <algorithm>

#include "soak/scenario.hpp"

namespace vantorium::soak {

namespace {

constexpr std::size_t mostKept = 10;

bool hasVideo(const VantoriumNativeAd& ad) {
  return std::ranges::any_of(ad.assets, [](const auto& asset) { return asset->type == "video"; });
}

std::string pathOf(const std::string& url) { return url.substr(url.find('/', url.find("://") + 3)); }

}  // namespace

void Scenario::fetchNativeAds(Dice& dice) {
  auto options = std::make_shared<VantoriumNativeAdOptions>();
  options->numberOfAdsToPrecache = 1 + static_cast<int>(dice.below(5));
  options->shouldDownloadAssets = dice.chance(0.8);
  Vantorium::precacheNativeAds(
      "native", options,
      application_.calls().expect("precacheNativeAds",
                                  Vantorium::NativeAdsCompletion(
                                      [this](const Vantorium::NativeAds& ads, const std::optional<Error>&) {
                                        for (const auto& ad : ads)
                                          nativeAds_.push_back({.ad = ad, .launch = launch_});
                                      })));
  dropNativeAds(mostKept);
}

void Scenario::checkNativeFiles(const VantoriumNativeAd& ad) {
  for (const auto& asset : ad.assets) {
    if (asset->filePath) checkFile(*asset->filePath, pathOf(asset->URL), "asset");
  }
  if (ad.appIconFilePath) checkFile(*ad.appIconFilePath, pathOf(ad.appIconURL), "icon");
}

void Scenario::showNativeAd(Dice& dice) {
  if (nativeAds_.empty() || !Vantorium::isConfigured()) return fetchNativeAds(dice);
  const NativeAd& chosen = dice.pick(nativeAds_);
  const VantoriumNativeAd& ad = *chosen.ad;
  const VantoriumNativeAd before = ad;  // an ad reports each of its events once
  if (chosen.launch == launch_) checkNativeFiles(ad);
  const auto view = headless::makeNativeAdView(application_.host(), 300, 400);
  bool isFilled = false;
  Vantorium::populateNativeAdView(
      view, chosen.ad,
      application_.calls().expect(
          "populateNativeAdView",
          Vantorium::Completion([&](bool success, const auto&) { isFilled = success; })));
  if (!isFilled) return books_.violate("native ad not shown", ad.impressionID);
  if (!before.isImpressionReported) books_.owe(ad.impressionID, "impression");
  if (!before.isVideoStartReported) books_.owe(ad.impressionID, "started");
  headless::setSeen(application_.host(), view, true);
  application_.advance(0.3);
  ++shown_["native"];
  if (hasVideo(ad) && dice.chance(0.5)) {
    headless::moveVideo(*view, 4, 8);
    headless::endVideo(*view, headless::VideoEnd::ended);
    if (!before.isVideoEndReported) books_.owe(ad.impressionID, "finished");
  }
  if (dice.chance(0.3)) {
    headless::tap(*view, "callToActionButton");
    books_.oweClick();
    if (!before.isClickReported) books_.owe(ad.impressionID, "click");
  }
  application_.pump();
  headless::setSeen(application_.host(), view, false);
}

// For applications that draw native ads by themselves.
void Scenario::reportNativeAd(Dice& dice) {
  const auto found =
      std::ranges::find_if(nativeAds_, [](const NativeAd& each) { return !each.ad->isImpressionReported; });
  if (found == nativeAds_.end() || !Vantorium::isConfigured()) return fetchNativeAds(dice);
  const std::string impression = found->ad->impressionID;
  Vantorium::reportNativeAdImpression(impression);
  books_.owe(impression, "impression");
  if (dice.chance(0.5)) {
    Vantorium::reportNativeAdVideoStarted(impression);
    books_.owe(impression, "started");
    Vantorium::reportNativeAdVideoEnded(impression);
    books_.owe(impression, "finished");
  }
  if (dice.chance(0.5)) {
    Vantorium::reportNativeAdClick(impression, std::nullopt);
    books_.owe(impression, "click");
  }
  ++shown_["native, by the application"];
  abandon(*found);
  nativeAds_.erase(found);
}

// Its files are to go with it.
void Scenario::abandon(const NativeAd& dropped) {
  if (dropped.launch != launch_) return;
  for (const auto& asset : dropped.ad->assets) {
    if (asset->filePath) abandoned_.emplace_back(*asset->filePath);
  }
}

void Scenario::dropNativeAds(std::size_t keep) {
  while (nativeAds_.size() > keep) {
    abandon(nativeAds_.front());
    nativeAds_.erase(nativeAds_.begin());
  }
}

}  // namespace vantorium::soak
