#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/delegate.hpp>
#include <vantorium/dispatch_queue.hpp>
#include <vantorium/error.hpp>
#include <vantorium/export.h>
#include <vantorium/native_ad.hpp>
#include <vantorium/options.hpp>
#include <vantorium/parameters.hpp>

namespace vantorium {

class Host;

/// What the SDK knows of a place for native ads in the application's interface. Opaque: the host's own class
/// makes it and hands it out, as `gtk::NativeAdView::view` does.
class VantoriumNativeAdView;

/// For developers of applications and of the SDK: another advertising service than the real one.
struct DeveloperSettings {
  /// Address of the service: https, or http on this machine only; scheme, host and perhaps a port, no
  /// trailing slash.
  std::string baseURL{};
  /// Address of the offer wall's host, likewise; empty for the real one.
  std::string widgetURL{};
  /// PEM file of a certificate to trust besides the system's; one that can be read, or empty for none.
  std::filesystem::path trustedCertificate{};
};

/// How much the SDK keeps, and for how long.
struct CacheSettings {
  /// Bytes on disk of creatives that have been shown and are kept, so that the next campaign with one of them
  /// need not fetch it. What waits to be shown comes on top. 0 keeps none.
  std::uint64_t budget = std::uint64_t{256} << 20U;
  /// Seconds after which a campaign that nobody has shown is replaced, as soon as a newer one has been
  /// fetched. More than 0.
  double campaignLifetime = 24 * 3600.0;
};

/// The one class that the application talks to. There are no instances: the functions stand for the one SDK
/// of the process.
///
/// Unless it says otherwise a function may be called on any thread and returns at once. Every completion is
/// called exactly once, never inside the call that was given it (but for refusals of the `show…` functions
/// and for `populateNativeAdView`), on the queue that the call names; a null queue is the main queue of the
/// host. When a delegate call and a completion are due on the main queue, the delegate hears first. Nothing
/// is ever thrown.
class VANTORIUM_API Vantorium {
 public:
  /// Told how a call ended. An `error` tells what failed; it stands beside success only where the call says
  /// so.
  using Completion = std::function<void(bool success, std::optional<Error> error)>;

  /// Keys of the `parameters` given to `configure`.
  static constexpr const char* userIDKey = "userId";  ///< text: the user's id with the application
  static constexpr const char* ageKey = "age";        ///< integer, years
  static constexpr const char* genderKey = "gender";  ///< text
  static constexpr const char* dateOfBirthdayKey = "dateOfBirth";  ///< time point

  /// Chooses the machine and toolkit that ads run on, such as `gtk::makeHost` gives. To be called once, on
  /// the main thread, before anything else: without a host the functions with a completion fail with
  /// `internalError`, inside the call, and the others do nothing. Fails when there is a host already or
  /// `host` is null. The host is kept until the process ends.
  static std::optional<Error> setHost(std::shared_ptr<Host> host);
  /// Accepted right after `setHost`, before the SDK is used; refused afterwards, for addresses that may not
  /// be a service's, and for a certificate that cannot be read, with an error that says what is wrong.
  /// Nothing changes then.
  static std::optional<Error> setDeveloperSettings(const DeveloperSettings& settings);
  /// Accepted right after `setHost`, before the SDK is used; refused afterwards, and for a lifetime that is
  /// no number above 0, with an error that says what is wrong. Nothing changes then.
  static std::optional<Error> setCacheSettings(const CacheSettings& settings);
  /// Takes away an ad that is shown, whose completion is called before this returns; ends all other work
  /// under way (each completion hears of it on its queue, the main loop must run once more for those); and
  /// stops the SDK's network within a second. Main thread. Afterwards, as before `setHost`, there is no host.
  /// An application that just exits need not call it: the network stops by itself then, as quickly.
  static void shutdown();

  /// Introduces the application to the service. On success the SDK is configured, and if `autoCaching` is on
  /// it starts to precache the interstitial and rewarded placements by itself. The delegate hears
  /// "didConfigure" or "didFailConfigureWith:", then the completion is called on `queue`.
  ///
  /// Fails with `functionInProgress` while another call is under way, with the service's or the network's
  /// error when the exchange fails; it may be tried again then. Once configured it reports success at once
  /// and ignores its arguments.
  static void configure(const std::string& withAppID, const std::optional<Parameters>& parameters,
                        std::shared_ptr<DispatchQueue> queue, Completion completion);
  /// The same, completing on the main queue.
  static void configure(const std::string& withAppID, const std::optional<Parameters>& parameters,
                        Completion completion);
  /// The same, without parameters.
  static void configure(const std::string& withAppID, Completion completion);

  /// Fetches a campaign for the placement and puts its files on disk, unless one is ready already. The
  /// delegate hears "didPrecacheForPlacement:" or "didFailPrecacheForPlacement:error:", then the completion
  /// is called on `queue`. An error beside success tells that of several campaigns the last one failed.
  ///
  /// Fails with `notConfigured`, with `functionInProgress` while the same placement is being precached, with
  /// the service's or the network's error otherwise.
  static void precacheCampaigns(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                                Completion completion);
  /// The same, completing on the main queue.
  static void precacheCampaigns(const std::string& forPlacement, Completion completion);

  /// Whether a campaign of the placement is on disk and has not been shown. Quick, though it looks at the
  /// disk: when somebody has removed the files of all that was ready, and `autoCaching` is on, they are
  /// fetched again. False before `configure` succeeded.
  static bool isCampaignReady(const std::string& placementID);

  /// Asks the service whether an ad of the placement may be shown now. (false, none) is a refusal; an error
  /// tells that it could not be asked.
  static void canView(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                      Completion completion);
  /// The same, completing on the main queue.
  static void canView(const std::string& forPlacement, Completion completion);

  /// Shows a precached campaign over the application's front screen. Main thread. The completion is called on
  /// the main thread: with success when the ad has been closed, with an error when it could not be shown to
  /// its end.
  ///
  /// Refusals call the completion inside this call: `notConfigured`; `functionInProgress` while an ad is
  /// shown; `noInternetConnection`; `noPrecachedDataToShow` when nothing is ready; `internalError` on another
  /// thread than the main one, when the platform cannot tell whether it is online, or when no window can take
  /// the ad.
  static void showCampaign(const std::string& forPlacement,
                           std::optional<VantoriumServerParameter> serverParameter, Completion completion);
  /// The same, without parameters.
  static void showCampaign(const std::string& forPlacement, Completion completion);

  /// Shows the service's offer wall, a live page on which the user picks an offer to earn by, over the
  /// application's front screen. Main thread. The placement names the wall to the service; a "clickId" among
  /// the parameters is sent to the wall as "pub_click_id". The delegate hears
  /// "didReceiveClickForPlacement:" when an offer is opened. The completion is called on the main thread:
  /// with success when the wall has been left, with the page's error when it could not be loaded.
  ///
  /// Refusals call the completion inside this call: as those of `showCampaign`, but for
  /// `noPrecachedDataToShow`; `notConfigured` too while no user is known, who comes with a `configure`.
  static void showOfferWall(const std::string& forPlacement,
                            std::optional<VantoriumServerParameter> serverParameter, Completion completion);
  /// The same, without parameters.
  static void showOfferWall(const std::string& forPlacement, Completion completion);

  /// Asks the service for an offer, fills the popup's template with it and shows the page over the
  /// application's front screen. Main thread. The delegate hears "didReceiveClickForPlacement:" when the
  /// offer is taken; the parameters travel with the click's report. The completion is called on the main
  /// thread: with success when the popup has been closed, with the service's or the network's error when
  /// there is no offer, with the disk's when its page cannot be written, with `internalError` when no window
  /// can take the popup, its page is too large, its window is closed or the SDK is shut down.
  ///
  /// Refusals call the completion inside this call: `notConfigured`; `noPrecachedDataToShow` before
  /// `precacheRewardablePopupTemplate` has succeeded; `functionInProgress` while an ad is prepared or shown;
  /// `internalError` on another thread than the main one.
  static void showRewardablePopup(const std::string& forPlacement,
                                  std::optional<VantoriumServerParameter> serverParameter,
                                  Completion completion);
  /// The same, without parameters.
  static void showRewardablePopup(const std::string& forPlacement, Completion completion);

  /// Fetches the template of rewardable popups, unless it is there already. Call it again only after its
  /// completion: of calls under way at the same time the last answer counts, a failure too.
  /// Fails with `notConfigured`, else with the service's or the network's error; it may be tried again then.
  static void precacheRewardablePopupTemplate(std::shared_ptr<DispatchQueue> queue, Completion completion);
  /// The same, completing on the main queue.
  static void precacheRewardablePopupTemplate(Completion completion);

  /// Ads as they were fetched; none is null.
  using NativeAds = std::vector<std::shared_ptr<VantoriumNativeAd>>;
  /// Told how fetching ended: with ads, with an error, or with both.
  using NativeAdsCompletion = std::function<void(NativeAds ads, std::optional<Error> error)>;
  /// Options of several kinds, in any order; of one kind the last counts.
  using AdOptions = std::vector<std::shared_ptr<VantoriumAdOptions>>;

  /// Fetches native ads for the placement and, unless the options say otherwise, puts their icons and media
  /// on disk. The ads belong to the caller, and the SDK keeps none of them: use them on the main thread, in
  /// `queue`'s completion too when that is another queue. Null options stand for fresh ones.
  ///
  /// The delegate hears "didPrecacheForPlacement:" or "didFailPrecacheForPlacement:error:", then the
  /// completion is called on `queue`. Ads beside an error tell that some of their files could not be fetched:
  /// they can be shown all the same, and their pictures and videos are loaded when they are.
  ///
  /// Fails with `notConfigured`, or with `functionInProgress` while ads of any kind are being precached for
  /// the placement (in both cases the delegate hears nothing); with the service's or the network's error when
  /// the ads cannot be fetched. There are no ads then.
  static void precacheNativeAds(const std::string& forPlacement,
                                std::shared_ptr<VantoriumNativeAdOptions> options,
                                std::shared_ptr<DispatchQueue> queue, NativeAdsCompletion completion);
  /// The same, completing on the main queue.
  static void precacheNativeAds(const std::string& forPlacement,
                                std::shared_ptr<VantoriumNativeAdOptions> options,
                                NativeAdsCompletion completion);
  /// The same, with fresh options.
  static void precacheNativeAds(const std::string& forPlacement, NativeAdsCompletion completion);

  /// Puts the ad into the view's outlets, in place of the one that was there, and reports its impression once
  /// the view is on screen. Of the options, `VantoriumMediaViewOptions` are for the media view and
  /// `VantoriumServerParameter` is sent with the report of a click; both stay with the view. Main thread; the
  /// completion is called inside this call, with success when the view is filled.
  ///
  /// Fails with `notConfigured`, or with `internalError` on another thread than the main one and when the
  /// view or the ad is null. The view is as it was then.
  static void populateNativeAdView(const std::shared_ptr<VantoriumNativeAdView>& view,
                                   const std::shared_ptr<VantoriumNativeAd>& with, const AdOptions& options,
                                   Completion completion);
  /// The same, with the options that the view has.
  static void populateNativeAdView(const std::shared_ptr<VantoriumNativeAdView>& view,
                                   const std::shared_ptr<VantoriumNativeAd>& with, Completion completion);

  /// For applications that draw native ads without a `VantoriumNativeAdView`: each call sends one report, so
  /// make it once for each ad. Nothing is sent before `configure` succeeded, and nothing tells what became of
  /// it.
  static void reportNativeAdImpression(const std::string& impressionID);
  /// The user followed the ad. The parameters travel with the report.
  static void reportNativeAdClick(const std::string& impressionID,
                                  const std::optional<VantoriumServerParameter>& serverParameter);
  /// The video, or the picture in its place, was seen.
  static void reportNativeAdVideoStarted(const std::string& impressionID);
  /// The video was seen to its end.
  static void reportNativeAdVideoEnded(const std::string& impressionID);

  /// Tries the placements that the SDK keeps precached again, as it does by itself after failures: after an
  /// hour when the service had nothing, sooner when the network failed, and at once when the device comes
  /// online. Not for applications.
  static void autoCachingTimerHandler();

  /// The diagnostic log, each line ended by "\n": the newest lines, up to 1 MiB of them; when older ones were
  /// dropped, its first line says so. Empty unless the service has switched test mode on.
  static std::string getLog();

  /// Whether an init exchange has succeeded. The application may write it: set to false, the next `configure`
  /// runs a new exchange.
  static bool isConfigured();
  /// See `isConfigured`.
  static void setIsConfigured(bool value);
  /// Whether an init exchange is under way.
  static bool isConfiguring();
  /// See `isConfiguring`. While true, `configure` is refused.
  static void setIsConfiguring(bool value);
  /// Whether a full-screen ad is being prepared or shown.
  static bool isShowingAds();
  /// See `isShowingAds`. While true, full-screen ads are refused.
  static void setIsShowingAds(bool value);
  /// Whether interstitial and rewarded placements are kept precached; true at first.
  static bool autoCaching();
  /// See `autoCaching`. Set it before `configure`, which is when precaching begins.
  static void setAutoCaching(bool value);

  /// Who hears of configuration, precaching, clicks and rewards; null for nobody.
  static std::shared_ptr<VantoriumDelegate> delegate();
  /// Held weakly: keep your own reference. Set it after `setHost`; without a host nothing is kept.
  static void setDelegate(std::weak_ptr<VantoriumDelegate> delegate);
};

}  // namespace vantorium
