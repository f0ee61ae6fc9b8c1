#include "model/native_ad.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "model/fields.hpp"

namespace vantorium {

using fields::text;
using nlohmann::json;

namespace {

/// Far more than is ever shown: each costs a download.
constexpr std::size_t mostAssets = 1000;

std::shared_ptr<VantoriumNativeAdAsset> makeAsset(const json& value) {
  auto asset = std::make_shared<VantoriumNativeAdAsset>();
  asset->URL = text(value, "url");
  asset->type = text(value, "type");
  const auto width = fields::number(value, "width"), height = fields::number(value, "height");
  if (width && height) asset->size = {*width, *height};
  return asset;
}

void readInfo(const json& info, VantoriumNativeAd& ad) {
  ad.adID = text(info, "adId");
  ad.appName = text(info, "appName");
  ad.storeAppID = text(info, "appId");
  ad.storeAppURL = text(info, "landingPage");
  ad.rating = fields::number(info, "rating").value_or(0);
  ad.reviewsCount = fields::wholeNumber(info, "reviews");
  ad.categories = fields::strings(info, "categories");
  ad.appDeveloper = text(info, "appDeveloper");
  ad.appDescription = text(info, "appDescription");
  ad.appIconURL = text(info, "appIcon");
}

void readAssets(const json& assets, VantoriumNativeAd& ad) {
  const bool isSound =
      assets.is_array() && std::ranges::all_of(assets, [](const json& one) { return one.is_object(); });
  if (!isSound) return;
  for (auto one = assets.begin(); one != assets.end() && ad.assets.size() < mostAssets; ++one) {
    ad.assets.push_back(makeAsset(*one));
  }
}

}  // namespace

std::shared_ptr<VantoriumNativeAd> makeNativeAd(const json& value, std::string placementID) {
  auto ad = std::make_shared<VantoriumNativeAd>();
  ad->placementID = std::move(placementID);
  readInfo(fields::valueOf(value, "info"), *ad);
  readAssets(fields::valueOf(value, "assets"), *ad);
  const auto& privacyPolicy = fields::valueOf(value, "privacyPolicy");
  ad->privacyPolicyURL = text(privacyPolicy, "url");
  ad->privacyPolicyImageURL = text(privacyPolicy, "image");
  ad->trackingURL = text(value, "trackingUrl");
  ad->callToActionText = text(value, "cta");
  ad->impressionID = text(value, "impressionId");
  return ad;
}

}  // namespace vantorium
