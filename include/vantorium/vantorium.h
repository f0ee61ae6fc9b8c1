#ifndef VANTORIUM_VANTORIUM_H
#define VANTORIUM_VANTORIUM_H

#include <vantorium/c/delegate.h>
#include <vantorium/c/error.h>
#include <vantorium/c/native_ad.h>
#include <vantorium/c/options.h>
#include <vantorium/c/queue.h>
#include <vantorium/c/types.h>

/** @file
 *  The C API: what `vantorium.hpp` offers to C++, for C11 and for every language that can call C.
 *
 *  `vantorium/c/types.h` says what handles, failures, texts and threads have in common. Each function
 *  stands under its selector's name in the table of `vantorium_entry_point`.
 *
 *      vantorium_host *host = …;
 *      if (!vantorium_set_host(host)) puts(vantorium_error_text(vantorium_last_error()));
 *      vantorium_configure("your-app-id", NULL, NULL, did_configure, &game, NULL);
 *
 *  A completion is called exactly once, as `vantorium_completion` says, never inside the call that was
 *  given it but for refusals of the `…_show_…` functions, for `vantorium_populate_native_ad_view`, without
 *  a host, and for arguments that are wrong: null or no UTF-8 where text is asked for, or handles that are
 *  of no use. Those end with VANTORIUM_ERROR_INTERNAL and a text that names the argument. When a delegate
 *  call and a completion are due on the main queue, the delegate hears first. A queue of the application's
 *  that drops work drops its completion. Completions and delegates may call anything here,
 *  `vantorium_shutdown` included. */

#ifdef __cplusplus
extern "C" {
#endif

/** Chooses the machine and toolkit that ads run on. To be called once, before anything else, on the thread
 *  that made the host, which is the main thread from then on. The host is kept until the process ends; the
 *  caller's reference stays the caller's. False when there is a host already, on another thread, or for a
 *  wrong handle. */
VANTORIUM_API bool vantorium_set_host(vantorium_host* host);
/** For developers: another advertising service than the real one. `base_url` is https, or http on this
 *  machine only: scheme, host and perhaps a port, without a trailing slash. `widget_url` is that of the
 *  offer wall's host, likewise, and `trusted_certificate` a PEM file to trust besides the system's; both
 *  may be null. Accepted right after `vantorium_set_host`, before the SDK is used; false afterwards, and
 *  for addresses that may not be a service's or a certificate that cannot be read. */
VANTORIUM_API bool vantorium_set_developer_settings(const char* base_url, const char* widget_url,
                                                    const char* trusted_certificate);
/** How much is kept: `budget` bytes on disk of creatives that have been shown (256 MiB unless it is set), so
 * that the next campaign with one of them need not fetch it; and for how many seconds, more than 0, a
 * campaign waits to be shown before a newer one takes its place (a day). Accepted when
 * `vantorium_set_developer_settings` is. */
VANTORIUM_API bool vantorium_set_cache_settings(uint64_t budget, double campaign_lifetime);
/** Takes away an ad that is shown, whose completion is called before this returns; ends all other work under
 *  way (each completion hears of it on its queue: run the main loop once more to hear those); and stops the
 *  SDK's network within a second. Afterwards there is no host. False, and nothing happens, on another thread
 *  than the main one; without a host it does nothing and is true. */
VANTORIUM_API bool vantorium_shutdown(void);

/** "configureWithAppID:parameters:queue:completion:": introduces the application to the service.
 *  `parameters` and `queue` may be null. The delegate hears "didConfigure" or "didFailConfigureWith:", then
 *  the completion is called on the queue. Once it has succeeded, and while "autoCaching" is on, the SDK
 *  keeps interstitial and rewarded placements precached by itself.
 *
 *  Fails with VANTORIUM_ERROR_FUNCTION_IN_PROGRESS while another call is under way, else with the service's
 *  or the network's error; it may be tried again then. Once configured it reports success at once. */
VANTORIUM_API void vantorium_configure(const char* app_id, vantorium_parameters* parameters,
                                       vantorium_queue* queue, vantorium_completion completion,
                                       void* user_data, vantorium_callback free_user_data);

/** "precacheCampaignsForPlacement:queue:completion:": fetches a campaign for the placement and puts its
 *  files on disk, unless one is ready. The delegate hears "didPrecacheForPlacement:" or
 *  "didFailPrecacheForPlacement:error:", then the completion is called on the queue. An error beside
 *  success tells that of several campaigns the last one failed.
 *
 *  Fails with VANTORIUM_ERROR_NOT_CONFIGURED, with VANTORIUM_ERROR_FUNCTION_IN_PROGRESS while the same
 *  placement is being precached, else with the service's or the network's error. */
VANTORIUM_API void vantorium_precache_campaigns(const char* placement, vantorium_queue* queue,
                                                vantorium_completion completion, void* user_data,
                                                vantorium_callback free_user_data);

/** "isCampaignReadyWithPlacementID:": whether a campaign of the placement is on disk and has not been
 *  shown. Quick; false before `vantorium_configure` succeeded. */
VANTORIUM_API bool vantorium_is_campaign_ready(const char* placement_id);

/** "canViewForPlacement:queue:completion:": asks the service whether an ad of the placement may be shown
 *  now. Failure without an error is a refusal; an error tells that it could not be asked. */
VANTORIUM_API void vantorium_can_view(const char* placement, vantorium_queue* queue,
                                      vantorium_completion completion, void* user_data,
                                      vantorium_callback free_user_data);

/** "showCampaignForPlacement:serverParameter:completion:": shows a precached campaign over the
 *  application's front screen. Main thread. The parameters, which may be null, travel with the click's
 *  report. The completion is called on the main thread: with success when the ad has been closed, with an
 *  error when it could not be shown to its end.
 *
 *  Refusals come inside the call: VANTORIUM_ERROR_NOT_CONFIGURED; VANTORIUM_ERROR_FUNCTION_IN_PROGRESS
 *  while an ad is shown; VANTORIUM_ERROR_NO_INTERNET_CONNECTION; VANTORIUM_ERROR_NO_PRECACHED_DATA_TO_SHOW;
 *  VANTORIUM_ERROR_INTERNAL on another thread than the main one, or when no window can take the ad. */
VANTORIUM_API void vantorium_show_campaign(const char* placement, vantorium_server_parameter* parameter,
                                           vantorium_completion completion, void* user_data,
                                           vantorium_callback free_user_data);

/** "showOfferWallForPlacement:serverParameter:completion:": shows the service's offer wall, a live page.
 *  Main thread. A "clickId" among the parameters is sent to the wall as "pub_click_id". The completion is
 *  called on the main thread: with success when the wall has been left, with the page's error when it could
 *  not be loaded. Refusals as `vantorium_show_campaign`, but for VANTORIUM_ERROR_NO_PRECACHED_DATA_TO_SHOW;
 *  VANTORIUM_ERROR_NOT_CONFIGURED too while no user is known, who comes with a `vantorium_configure`. */
VANTORIUM_API void vantorium_show_offer_wall(const char* placement, vantorium_server_parameter* parameter,
                                             vantorium_completion completion, void* user_data,
                                             vantorium_callback free_user_data);

/** "showRewardablePopupForPlacement:serverParameter:completion:": asks the service for an offer, fills the
 *  popup's template with it and shows the page. Main thread. The completion is called on the main thread:
 *  with success when the popup has been closed, else with an error.
 *
 *  Refusals come inside the call: VANTORIUM_ERROR_NOT_CONFIGURED; VANTORIUM_ERROR_NO_PRECACHED_DATA_TO_SHOW
 *  before `vantorium_precache_rewardable_popup_template` has succeeded;
 *  VANTORIUM_ERROR_FUNCTION_IN_PROGRESS while an ad is prepared or shown; VANTORIUM_ERROR_INTERNAL on
 *  another thread than the main one. */
VANTORIUM_API void vantorium_show_rewardable_popup(const char* placement,
                                                   vantorium_server_parameter* parameter,
                                                   vantorium_completion completion, void* user_data,
                                                   vantorium_callback free_user_data);

/** "precacheRewardablePopupTemplateWithQueue:completion:": fetches the template of rewardable popups,
 *  unless it is there. Call it again only after its completion. Fails with VANTORIUM_ERROR_NOT_CONFIGURED,
 *  else with the service's or the network's error. */
VANTORIUM_API void vantorium_precache_rewardable_popup_template(vantorium_queue* queue,
                                                                vantorium_completion completion,
                                                                void* user_data,
                                                                vantorium_callback free_user_data);

/** Called once with the ads, which are lent for the call, as is the array. Ads beside an error tell that
 *  some of their files could not be fetched: they can be shown all the same. */
typedef void (*vantorium_native_ads_completion)(void* user_data, vantorium_native_ad* const* ads,
                                                size_t count, vantorium_error* error);

/** "precacheNativeAdsForPlacement:options:queue:completion:": fetches native ads for the placement and,
 *  unless the options say otherwise, puts their icons and media on disk. `options` may be null. The ads
 *  belong to the caller, who uses them on the main thread. The delegate hears "didPrecacheForPlacement:" or
 *  "didFailPrecacheForPlacement:error:", then the completion is called on the queue.
 *
 *  Fails with VANTORIUM_ERROR_NOT_CONFIGURED, with VANTORIUM_ERROR_FUNCTION_IN_PROGRESS while ads of any
 *  kind are being precached for the placement (in both cases the delegate hears nothing), else with the
 *  service's or the network's error. There are no ads then. */
VANTORIUM_API void vantorium_precache_native_ads(const char* placement, vantorium_native_ad_options* options,
                                                 vantorium_queue* queue,
                                                 vantorium_native_ads_completion completion, void* user_data,
                                                 vantorium_callback free_user_data);

/** "populateNativeAdViewWithView:with:options:completion:": puts the ad into the view's outlets, in place
 *  of the one that was there, and reports its impression once the view is on screen. `options` are
 *  `options_count` of `VANTORIUM_AD_OPTIONS`, or null for none: media view options are for the view's
 *  medium, server parameters travel with the click's report, others are ignored. Main thread; the
 *  completion is called inside the call.
 *
 *  Fails with VANTORIUM_ERROR_NOT_CONFIGURED, or with VANTORIUM_ERROR_INTERNAL on another thread and for
 *  wrong handles. The view is as it was then. */
VANTORIUM_API void vantorium_populate_native_ad_view(vantorium_native_ad_view* view, vantorium_native_ad* ad,
                                                     vantorium_ad_options* const* options,
                                                     size_t options_count, vantorium_completion completion,
                                                     void* user_data, vantorium_callback free_user_data);

/** "reportNativeAdImpressionWithImpressionID:": for applications that draw native ads without a view; each
 *  call sends one report, so make it once for each ad. Nothing is sent before `vantorium_configure`
 *  succeeded. */
VANTORIUM_API void vantorium_report_native_ad_impression(const char* impression_id);
/** "reportNativeAdClickWithImpressionID:serverParameter:": likewise; the user followed the ad. The
 *  parameters may be null. */
VANTORIUM_API void vantorium_report_native_ad_click(const char* impression_id,
                                                    vantorium_server_parameter* parameter);
/** "reportNativeAdVideoStartedWithImpressionID:": likewise. */
VANTORIUM_API void vantorium_report_native_ad_video_started(const char* impression_id);
/** "reportNativeAdVideoEndedWithImpressionID:": likewise. */
VANTORIUM_API void vantorium_report_native_ad_video_ended(const char* impression_id);

/** "getLog": the diagnostic log, each line ended by "\n": the newest lines, up to 1 MiB of them; when older
 *  ones were dropped, its first line says so. To be freed with `vantorium_free_text`. Empty unless the
 * service has switched test mode on. Null only when memory ran out. */
VANTORIUM_API char* vantorium_get_log(void);
/** "autoCachingTimerHandlerWithTimer:": tries the placements that the SDK keeps precached again, as it
 *  does by itself after failures. Not for applications; `timer` is ignored. */
VANTORIUM_API void vantorium_auto_caching_timer_handler(void* timer);

/** "isConfigured": whether an init exchange has succeeded. */
VANTORIUM_API bool vantorium_is_configured(void);
/** "setIsConfigured:": set to false, the next `vantorium_configure` runs a new exchange. */
VANTORIUM_API void vantorium_set_is_configured(bool value);
/** "isConfiguring": whether an init exchange is under way. */
VANTORIUM_API bool vantorium_is_configuring(void);
/** "setIsConfiguring:" */
VANTORIUM_API void vantorium_set_is_configuring(bool value);
/** "isShowingAds": whether a full-screen ad is being prepared or shown. */
VANTORIUM_API bool vantorium_is_showing_ads(void);
/** "setIsShowingAds:" */
VANTORIUM_API void vantorium_set_is_showing_ads(bool value);
/** "autoCaching": whether interstitial and rewarded placements are kept precached; true at first. */
VANTORIUM_API bool vantorium_auto_caching(void);
/** "setAutoCaching:"; without a host nothing is kept, as with the setters above. */
VANTORIUM_API void vantorium_set_auto_caching(bool value);
/** "delegate": who hears of what happens, as a reference of the caller's; null when there is none. */
VANTORIUM_API vantorium_delegate* vantorium_get_delegate(void);
/** "setDelegate:": the SDK holds it weakly, so keep your reference; null for none. To be called after
 *  `vantorium_set_host`. False without a host or for a wrong handle. */
VANTORIUM_API bool vantorium_set_delegate(vantorium_delegate* delegate);

/** "userIDKey": "userId", the key of the user's id with the application, a text. */
VANTORIUM_API const char* vantorium_user_id_key(void);
/** "ageKey": "age", the key of the user's age in years, an integer. */
VANTORIUM_API const char* vantorium_age_key(void);
/** "genderKey": "gender", the key of a text. */
VANTORIUM_API const char* vantorium_gender_key(void);
/** "dateOfBirthdayKey": "dateOfBirth", the key of a date. */
VANTORIUM_API const char* vantorium_date_of_birthday_key(void);

/** Any function; to be cast to the type of the one that the selector stands for. */
typedef void (*vantorium_function)(void);
/** The function of this API that the selector stands for, such as `vantorium_configure` for
 *  "configureWithAppID:parameters:queue:completion:". Null for a name that no function has. */
VANTORIUM_API vantorium_function vantorium_entry_point(const char* selector);
/** The selectors that `vantorium_entry_point` knows, by index from 0 on; null after the last. */
VANTORIUM_API const char* vantorium_selector_at(size_t index);

#ifdef __cplusplus
}
#endif

#endif
