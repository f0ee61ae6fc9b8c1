// The records of native ads.
#include "bindings/c/native_ad.hpp"

#include "bindings/c/call.hpp"
#include "facade/process.hpp"

namespace vantorium::c {

std::optional<std::thread::id> mainThread() {
  const auto sdk = Process::shared().sdk();
  if (!sdk) return std::nullopt;
  return sdk->mainThread();
}

}  // namespace vantorium::c

using namespace vantorium;
using namespace vantorium::c;

namespace {

using Ad = VantoriumNativeAd;
using Asset = VantoriumNativeAdAsset;

/// The text of the ad that is always there; null for the one that may be missing.
std::string* textOf(Ad& ad, vantorium_native_ad_text text) {
  switch (text) {
    case VANTORIUM_NATIVE_AD_ID:
      return &ad.adID;
    case VANTORIUM_NATIVE_AD_APP_NAME:
      return &ad.appName;
    case VANTORIUM_NATIVE_AD_STORE_APP_ID:
      return &ad.storeAppID;
    case VANTORIUM_NATIVE_AD_STORE_APP_URL:
      return &ad.storeAppURL;
    case VANTORIUM_NATIVE_AD_APP_DEVELOPER:
      return &ad.appDeveloper;
    case VANTORIUM_NATIVE_AD_APP_DESCRIPTION:
      return &ad.appDescription;
    case VANTORIUM_NATIVE_AD_APP_ICON_URL:
      return &ad.appIconURL;
    case VANTORIUM_NATIVE_AD_APP_ICON_FILE_PATH:
      return nullptr;
    case VANTORIUM_NATIVE_AD_TRACKING_URL:
      return &ad.trackingURL;
    case VANTORIUM_NATIVE_AD_PRIVACY_POLICY_URL:
      return &ad.privacyPolicyURL;
    case VANTORIUM_NATIVE_AD_PRIVACY_POLICY_IMAGE_URL:
      return &ad.privacyPolicyImageURL;
    case VANTORIUM_NATIVE_AD_CALL_TO_ACTION_TEXT:
      return &ad.callToActionText;
    case VANTORIUM_NATIVE_AD_IMPRESSION_ID:
      return &ad.impressionID;
    case VANTORIUM_NATIVE_AD_PLACEMENT_ID:
      return &ad.placementID;
  }
  refuse("\"text\" names no text of a native ad. Give a VANTORIUM_NATIVE_AD_… constant.");
}

bool& markOf(Ad& ad, vantorium_native_ad_mark mark) {
  switch (mark) {
    case VANTORIUM_NATIVE_AD_IMPRESSION_REPORTED:
      return ad.isImpressionReported;
    case VANTORIUM_NATIVE_AD_CLICK_REPORTED:
      return ad.isClickReported;
    case VANTORIUM_NATIVE_AD_VIDEO_START_REPORTED:
      return ad.isVideoStartReported;
    case VANTORIUM_NATIVE_AD_VIDEO_END_REPORTED:
      return ad.isVideoEndReported;
  }
  refuse("\"mark\" names no mark of a native ad. Give a VANTORIUM_NATIVE_AD_…_REPORTED constant.");
}

const char* pointerTo(const std::optional<std::string>& text) { return text ? text->c_str() : nullptr; }

/// Reads something of the record; `failure` when it may not be read.
template <typename Handle, typename Result, typename Read>
Result get(Handle* record, Result failure, Read read) {
  return call(failure, [&]() -> Result { return read(*object(record, "record")); });
}

template <typename Handle, typename Write>
bool set(Handle* record, Write write) {
  return perform([&] { write(*object(record, "record")); });
}

template <typename List>
const auto& at(const List& list, std::size_t index) {
  if (index >= list.size()) refuse("\"index\" is too large. Give one below the count.");
  return list[index];
}

}  // namespace

vantorium_native_ad* vantorium_native_ad_new(void) {
  return call<vantorium_native_ad*>(
      nullptr, [] { return give<vantorium_native_ad>(std::make_shared<Ad>(), mainThread()); });
}

const char* vantorium_native_ad_get_text(vantorium_native_ad* ad, vantorium_native_ad_text text) {
  return get(ad, static_cast<const char*>(nullptr), [&](Ad& record) {
    const auto* const always = textOf(record, text);
    return always != nullptr ? always->c_str() : pointerTo(record.appIconFilePath);
  });
}

bool vantorium_native_ad_set_text(vantorium_native_ad* ad, vantorium_native_ad_text text, const char* value) {
  return set(ad, [&](Ad& record) {
    if (auto* const always = textOf(record, text)) {
      *always = c::text(value, "value");
    } else {
      record.appIconFilePath = textIfAny(value, "value");
    }
  });
}

double vantorium_native_ad_rating(vantorium_native_ad* ad) {
  return get(ad, 0.0, [](const Ad& record) { return record.rating; });
}

bool vantorium_native_ad_set_rating(vantorium_native_ad* ad, double value) {
  return set(ad, [&](Ad& record) { record.rating = value; });
}

int64_t vantorium_native_ad_reviews_count(vantorium_native_ad* ad) {
  return get(ad, std::int64_t{0}, [](const Ad& record) { return record.reviewsCount; });
}

bool vantorium_native_ad_set_reviews_count(vantorium_native_ad* ad, int64_t value) {
  return set(ad, [&](Ad& record) { record.reviewsCount = value; });
}

size_t vantorium_native_ad_categories_count(vantorium_native_ad* ad) {
  return get(ad, std::size_t{0}, [](const Ad& record) { return record.categories.size(); });
}

const char* vantorium_native_ad_category_at(vantorium_native_ad* ad, size_t index) {
  return get(ad, static_cast<const char*>(nullptr),
             [&](const Ad& record) { return at(record.categories, index).c_str(); });
}

bool vantorium_native_ad_add_category(vantorium_native_ad* ad, const char* category) {
  return set(ad, [&](Ad& record) { record.categories.push_back(text(category, "category")); });
}

bool vantorium_native_ad_remove_categories(vantorium_native_ad* ad) {
  return set(ad, [](Ad& record) { record.categories.clear(); });
}

size_t vantorium_native_ad_assets_count(vantorium_native_ad* ad) {
  return get(ad, std::size_t{0}, [](const Ad& record) { return record.assets.size(); });
}

vantorium_native_ad_asset* vantorium_native_ad_get_asset_at(vantorium_native_ad* ad, size_t index) {
  return call<vantorium_native_ad_asset*>(nullptr, [&] {
    const auto of = found(ad, {Kind::nativeAd}, "ad");
    return give<vantorium_native_ad_asset>(at(std::static_pointer_cast<Ad>(of.object)->assets, index),
                                           of.user);
  });
}

bool vantorium_native_ad_add_asset(vantorium_native_ad* ad, vantorium_native_ad_asset* asset) {
  return set(ad, [&](Ad& record) { record.assets.push_back(object(asset, "asset")); });
}

bool vantorium_native_ad_remove_assets(vantorium_native_ad* ad) {
  return set(ad, [](Ad& record) { record.assets.clear(); });
}

bool vantorium_native_ad_is_reported(vantorium_native_ad* ad, vantorium_native_ad_mark mark) {
  return get(ad, false, [&](Ad& record) { return markOf(record, mark); });
}

bool vantorium_native_ad_set_is_reported(vantorium_native_ad* ad, vantorium_native_ad_mark mark, bool value) {
  return set(ad, [&](Ad& record) { markOf(record, mark) = value; });
}

bool vantorium_native_ad_has_app_icon_image(vantorium_native_ad* ad) {
  return get(ad, false, [](const Ad& record) { return record.appIconImage() != nullptr; });
}

vantorium_native_ad_asset* vantorium_native_ad_asset_new(void) {
  return call<vantorium_native_ad_asset*>(
      nullptr, [] { return give<vantorium_native_ad_asset>(std::make_shared<Asset>(), mainThread()); });
}

const char* vantorium_native_ad_asset_url(vantorium_native_ad_asset* asset) {
  return get(asset, static_cast<const char*>(nullptr),
             [](const Asset& record) { return record.URL.c_str(); });
}

bool vantorium_native_ad_asset_set_url(vantorium_native_ad_asset* asset, const char* value) {
  return set(asset, [&](Asset& record) { record.URL = text(value, "value"); });
}

const char* vantorium_native_ad_asset_type(vantorium_native_ad_asset* asset) {
  return get(asset, static_cast<const char*>(nullptr),
             [](const Asset& record) { return record.type.c_str(); });
}

bool vantorium_native_ad_asset_set_type(vantorium_native_ad_asset* asset, const char* value) {
  return set(asset, [&](Asset& record) { record.type = text(value, "value"); });
}

double vantorium_native_ad_asset_width(vantorium_native_ad_asset* asset) {
  return get(asset, 0.0, [](const Asset& record) { return record.size.width; });
}

double vantorium_native_ad_asset_height(vantorium_native_ad_asset* asset) {
  return get(asset, 0.0, [](const Asset& record) { return record.size.height; });
}

bool vantorium_native_ad_asset_set_size(vantorium_native_ad_asset* asset, double width, double height) {
  return set(asset, [&](Asset& record) { record.size = {width, height}; });
}

const char* vantorium_native_ad_asset_file_path(vantorium_native_ad_asset* asset) {
  return get(asset, static_cast<const char*>(nullptr),
             [](const Asset& record) { return pointerTo(record.filePath); });
}

bool vantorium_native_ad_asset_set_file_path(vantorium_native_ad_asset* asset, const char* value) {
  return set(asset, [&](Asset& record) { record.filePath = textIfAny(value, "value"); });
}

const char* vantorium_native_ad_asset_internal_file_path(vantorium_native_ad_asset* asset) {
  return get(asset, static_cast<const char*>(nullptr),
             [](const Asset& record) { return pointerTo(record.internalFilePath); });
}

bool vantorium_native_ad_asset_set_internal_file_path(vantorium_native_ad_asset* asset, const char* value) {
  return set(asset, [&](Asset& record) { record.internalFilePath = textIfAny(value, "value"); });
}

bool vantorium_native_ad_asset_has_image(vantorium_native_ad_asset* asset) {
  return get(asset, false, [](const Asset& record) { return record.image() != nullptr; });
}
