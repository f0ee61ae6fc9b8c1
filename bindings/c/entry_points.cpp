// The table of entry points and properties by the names under which message-passing runtimes know them.
#include <algorithm>
#include <array>
#include <cstring>

#include <vantorium/vantorium.h>

namespace {

struct EntryPoint {
  const char* selector;
  vantorium_function function;
};

template <typename Result, typename... Arguments>
EntryPoint named(const char* selector, Result (*function)(Arguments...)) {
  return {selector, reinterpret_cast<vantorium_function>(function)};
}

const auto& entryPoints() {
  static const auto points = std::to_array<EntryPoint>({
      named("configureWithAppID:parameters:queue:completion:", vantorium_configure),
      named("precacheCampaignsForPlacement:queue:completion:", vantorium_precache_campaigns),
      named("isCampaignReadyWithPlacementID:", vantorium_is_campaign_ready),
      named("canViewForPlacement:queue:completion:", vantorium_can_view),
      named("autoCachingTimerHandlerWithTimer:", vantorium_auto_caching_timer_handler),
      named("showCampaignForPlacement:serverParameter:completion:", vantorium_show_campaign),
      named("showOfferWallForPlacement:serverParameter:completion:", vantorium_show_offer_wall),
      named("showRewardablePopupForPlacement:serverParameter:completion:", vantorium_show_rewardable_popup),
      named("precacheRewardablePopupTemplateWithQueue:completion:",
            vantorium_precache_rewardable_popup_template),
      named("getLog", vantorium_get_log),
      named("precacheNativeAdsForPlacement:options:queue:completion:", vantorium_precache_native_ads),
      named("populateNativeAdViewWithView:with:options:completion:", vantorium_populate_native_ad_view),
      named("reportNativeAdClickWithImpressionID:serverParameter:", vantorium_report_native_ad_click),
      named("reportNativeAdImpressionWithImpressionID:", vantorium_report_native_ad_impression),
      named("reportNativeAdVideoStartedWithImpressionID:", vantorium_report_native_ad_video_started),
      named("reportNativeAdVideoEndedWithImpressionID:", vantorium_report_native_ad_video_ended),
      named("isConfigured", vantorium_is_configured),
      named("setIsConfigured:", vantorium_set_is_configured),
      named("isConfiguring", vantorium_is_configuring),
      named("setIsConfiguring:", vantorium_set_is_configuring),
      named("isShowingAds", vantorium_is_showing_ads),
      named("setIsShowingAds:", vantorium_set_is_showing_ads),
      named("autoCaching", vantorium_auto_caching),
      named("setAutoCaching:", vantorium_set_auto_caching),
      named("delegate", vantorium_get_delegate),
      named("setDelegate:", vantorium_set_delegate),
      named("userIDKey", vantorium_user_id_key),
      named("ageKey", vantorium_age_key),
      named("genderKey", vantorium_gender_key),
      named("dateOfBirthdayKey", vantorium_date_of_birthday_key),
  });
  return points;
}

}  // namespace

vantorium_function vantorium_entry_point(const char* selector) {
  if (selector == nullptr) return nullptr;
  const auto& all = entryPoints();
  const auto* const found = std::find_if(all.begin(), all.end(), [&](const EntryPoint& each) {
    return std::strcmp(each.selector, selector) == 0;
  });
  return found == all.end() ? nullptr : found->function;
}

const char* vantorium_selector_at(size_t index) {
  const auto& all = entryPoints();
  return index < all.size() ? all[index].selector : nullptr;
}
