// The entry points and properties of the SDK.
#include <cstring>

#include "bindings/c/callback.hpp"
#include "bindings/c/delegate.hpp"
#include "bindings/c/native_ad.hpp"
#include "facade/process.hpp"

using namespace vantorium;
using namespace vantorium::c;

namespace {

std::optional<VantoriumServerParameter> copyIfAny(vantorium_server_parameter* parameter) {
  const auto given = objectIfAny(parameter, "parameter");
  if (!given) return std::nullopt;
  return *given;
}

std::shared_ptr<VantoriumAdOptions> anyOptions(vantorium_ad_options* options) {
  const auto of = found(options, {Kind::mediaViewOptions, Kind::serverParameter, Kind::nativeAdOptions},
                        "one of options");
  switch (of.kind) {
    case Kind::mediaViewOptions:
      return std::static_pointer_cast<VantoriumMediaViewOptions>(of.object);
    case Kind::serverParameter:
      return std::static_pointer_cast<VantoriumServerParameter>(of.object);
    default:
      return std::static_pointer_cast<VantoriumNativeAdOptions>(of.object);
  }
}

Vantorium::AdOptions allOptions(vantorium_ad_options* const* options, std::size_t count) {
  if (options == nullptr && count > 0) refuse(R"("options" is null, but "options_count" is not 0.)");
  Vantorium::AdOptions all;
  for (std::size_t index = 0; index < count; ++index) all.push_back(anyOptions(options[index]));
  return all;
}

using Show = void (*)(const std::string&, std::optional<VantoriumServerParameter>, Vantorium::Completion);

void show(Show shown, const char* placement, vantorium_server_parameter* parameter,
          vantorium_completion completion, void* data, vantorium_callback free) {
  begin(completion, data, free, [&](Vantorium::Completion done) {
    shown(text(placement, "placement"), copyIfAny(parameter), std::move(done));
  });
}

/// Tells an application of its ads, lent for the call.
void tell(const Callback<vantorium_native_ads_completion>& callback, const Vantorium::NativeAds& ads,
          std::shared_ptr<Error> error, std::optional<std::thread::id> user) {
  callback.once([&](vantorium_native_ads_completion completion, void* data) {
    std::vector<Lent<vantorium_native_ad>> lent;
    std::vector<vantorium_native_ad*> handles;
    lent.reserve(ads.size());
    for (const auto& ad : ads) handles.push_back(lent.emplace_back(ad, user).get());
    const Lent<vantorium_error> lentError(std::move(error));
    completion(data, handles.data(), handles.size(), lentError.get());
  });
}

}  // namespace

bool vantorium_set_host(vantorium_host* host) {
  return perform([&] { refuseIf(Vantorium::setHost(object(host, "host"))); });
}

bool vantorium_set_developer_settings(const char* base_url, const char* widget_url,
                                      const char* trusted_certificate) {
  return perform([&] {
    refuseIf(Vantorium::setDeveloperSettings(
        {.baseURL = text(base_url, "base_url"),
         .widgetURL = textIfAny(widget_url, "widget_url").value_or(""),
         .trustedCertificate = textIfAny(trusted_certificate, "trusted_certificate").value_or("")}));
  });
}

bool vantorium_set_cache_settings(uint64_t budget, double campaign_lifetime) {
  return perform([&] {
    refuseIf(Vantorium::setCacheSettings({.budget = budget, .campaignLifetime = campaign_lifetime}));
  });
}

bool vantorium_shutdown(void) {
  return perform([] {
    const auto main = mainThread();
    if (main && *main != std::this_thread::get_id())
      refuse("The SDK is shut down on the main thread. Call vantorium_shutdown there.");
    Vantorium::shutdown();
  });
}

void vantorium_configure(const char* app_id, vantorium_parameters* parameters, vantorium_queue* queue,
                         vantorium_completion completion, void* user_data,
                         vantorium_callback free_user_data) {
  begin(completion, user_data, free_user_data, [&](Vantorium::Completion done) {
    const auto appID = text(app_id, "app_id");
    const auto given = objectIfAny(parameters, "parameters");
    Vantorium::configure(appID, given ? std::optional(*given) : std::nullopt, objectIfAny(queue, "queue"),
                         std::move(done));
  });
}

void vantorium_precache_campaigns(const char* placement, vantorium_queue* queue,
                                  vantorium_completion completion, void* user_data,
                                  vantorium_callback free_user_data) {
  begin(completion, user_data, free_user_data, [&](Vantorium::Completion done) {
    Vantorium::precacheCampaigns(text(placement, "placement"), objectIfAny(queue, "queue"), std::move(done));
  });
}

bool vantorium_is_campaign_ready(const char* placement_id) {
  return call(false, [&] { return Vantorium::isCampaignReady(text(placement_id, "placement_id")); });
}

void vantorium_can_view(const char* placement, vantorium_queue* queue, vantorium_completion completion,
                        void* user_data, vantorium_callback free_user_data) {
  begin(completion, user_data, free_user_data, [&](Vantorium::Completion done) {
    Vantorium::canView(text(placement, "placement"), objectIfAny(queue, "queue"), std::move(done));
  });
}

void vantorium_show_campaign(const char* placement, vantorium_server_parameter* parameter,
                             vantorium_completion completion, void* user_data,
                             vantorium_callback free_user_data) {
  show(&Vantorium::showCampaign, placement, parameter, completion, user_data, free_user_data);
}

void vantorium_show_offer_wall(const char* placement, vantorium_server_parameter* parameter,
                               vantorium_completion completion, void* user_data,
                               vantorium_callback free_user_data) {
  show(&Vantorium::showOfferWall, placement, parameter, completion, user_data, free_user_data);
}

void vantorium_show_rewardable_popup(const char* placement, vantorium_server_parameter* parameter,
                                     vantorium_completion completion, void* user_data,
                                     vantorium_callback free_user_data) {
  show(&Vantorium::showRewardablePopup, placement, parameter, completion, user_data, free_user_data);
}

void vantorium_precache_rewardable_popup_template(vantorium_queue* queue, vantorium_completion completion,
                                                  void* user_data, vantorium_callback free_user_data) {
  begin(completion, user_data, free_user_data, [&](Vantorium::Completion done) {
    Vantorium::precacheRewardablePopupTemplate(objectIfAny(queue, "queue"), std::move(done));
  });
}

void vantorium_precache_native_ads(const char* placement, vantorium_native_ad_options* options,
                                   vantorium_queue* queue, vantorium_native_ads_completion completion,
                                   void* user_data, vantorium_callback free_user_data) {
  using Told = Callback<vantorium_native_ads_completion>;
  beginWith(
      completion, user_data, free_user_data,
      [&](const Told& callback) {
        Vantorium::precacheNativeAds(
            text(placement, "placement"), objectIfAny(options, "options"), objectIfAny(queue, "queue"),
            [callback, user = mainThread()](const Vantorium::NativeAds& ads,
                                            const std::optional<Error>& error) {
              tell(callback, ads, error ? std::make_shared<Error>(*error) : nullptr, user);
            });
      },
      [](const Told& callback) { tell(callback, {}, whyRefused(), std::nullopt); });
}

void vantorium_populate_native_ad_view(vantorium_native_ad_view* view, vantorium_native_ad* ad,
                                       vantorium_ad_options* const* options, size_t options_count,
                                       vantorium_completion completion, void* user_data,
                                       vantorium_callback free_user_data) {
  begin(completion, user_data, free_user_data, [&](Vantorium::Completion done) {
    const auto place = object(view, "view");
    const auto record = object(ad, "ad");
    Vantorium::populateNativeAdView(place, record, allOptions(options, options_count), std::move(done));
  });
}

void vantorium_report_native_ad_impression(const char* impression_id) {
  perform([&] { Vantorium::reportNativeAdImpression(text(impression_id, "impression_id")); });
}

void vantorium_report_native_ad_click(const char* impression_id, vantorium_server_parameter* parameter) {
  perform(
      [&] { Vantorium::reportNativeAdClick(text(impression_id, "impression_id"), copyIfAny(parameter)); });
}

void vantorium_report_native_ad_video_started(const char* impression_id) {
  perform([&] { Vantorium::reportNativeAdVideoStarted(text(impression_id, "impression_id")); });
}

void vantorium_report_native_ad_video_ended(const char* impression_id) {
  perform([&] { Vantorium::reportNativeAdVideoEnded(text(impression_id, "impression_id")); });
}

char* vantorium_get_log(void) {
  return call<char*>(nullptr, [] { return strdup(Vantorium::getLog().c_str()); });
}

void vantorium_auto_caching_timer_handler(void* /*timer*/) {
  perform([] { Vantorium::autoCachingTimerHandler(); });
}

bool vantorium_is_configured(void) { return call(false, Vantorium::isConfigured); }

void vantorium_set_is_configured(bool value) {
  perform([&] { Vantorium::setIsConfigured(value); });
}

bool vantorium_is_configuring(void) { return call(false, Vantorium::isConfiguring); }

void vantorium_set_is_configuring(bool value) {
  perform([&] { Vantorium::setIsConfiguring(value); });
}

bool vantorium_is_showing_ads(void) { return call(false, Vantorium::isShowingAds); }

void vantorium_set_is_showing_ads(bool value) {
  perform([&] { Vantorium::setIsShowingAds(value); });
}

bool vantorium_auto_caching(void) { return call(true, Vantorium::autoCaching); }

void vantorium_set_auto_caching(bool value) {
  perform([&] { Vantorium::setAutoCaching(value); });
}

vantorium_delegate* vantorium_get_delegate(void) {
  return call<vantorium_delegate*>(nullptr, [] { return handleOf(Vantorium::delegate()); });
}

bool vantorium_set_delegate(vantorium_delegate* delegate) {
  return perform([&] {
    const auto given = objectIfAny(delegate, "delegate");
    if (!Process::shared().sdk()) refuse("There is no host. Call vantorium_set_host before anything else.");
    Vantorium::setDelegate(given);
  });
}

const char* vantorium_user_id_key(void) { return Vantorium::userIDKey; }
const char* vantorium_age_key(void) { return Vantorium::ageKey; }
const char* vantorium_gender_key(void) { return Vantorium::genderKey; }
const char* vantorium_date_of_birthday_key(void) { return Vantorium::dateOfBirthdayKey; }
