#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <vantorium/dispatch_queue.hpp>
#include <vantorium/error.hpp>
#include <vantorium/options.hpp>
#include <vantorium/parameters.hpp>
#include <vantorium/vantorium.hpp>

#include "cache/prepared_popup.hpp"
#include "context/sdk_context.hpp"
#include "facade/client.hpp"
#include "facade/flag_mark.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "precache/auto_caching.hpp"
#include "precache/campaign_precacher.hpp"
#include "precache/native_ad_precacher.hpp"

namespace vantorium {

class BaseViewController;
class VantoriumNativeAdView;

/// The whole SDK as one object: what the static facade forwards to, and what tests make for themselves. Made
/// with `Sdk::make` on the main thread, ended with `shutdown`.
class Sdk : public std::enable_shared_from_this<Sdk> {
 public:
  using Completion = std::function<void(bool success, std::optional<Error> error)>;
  using AdOptions = std::vector<std::shared_ptr<VantoriumAdOptions>>;

  static std::shared_ptr<Sdk> make(std::shared_ptr<Host> host);
  explicit Sdk(std::shared_ptr<Host> host);
  ~Sdk();

  const std::shared_ptr<SdkContext>& context() const { return context_; }
  /// The thread that the SDK was made on.
  std::thread::id mainThread() const { return mainThread_; }
  bool isOnMainThread() const { return std::this_thread::get_id() == mainThread_; }

  /// Points the SDK at another service. Refused, with what is wrong, once the SDK was used or when an address
  /// may not be a service's. Any thread.
  std::optional<Error> setServiceConfiguration(ServiceConfiguration configuration) EXCLUDES(mutex_);

  /// See `Vantorium`. Any thread.
  std::optional<Error> setCacheSettings(const CacheSettings& settings) EXCLUDES(mutex_);

  // The entry points: see `Vantorium`.
  void configure(const std::string& appID, const std::optional<Parameters>& parameters,
                 std::shared_ptr<DispatchQueue> queue, Completion completion);
  void precacheCampaigns(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                         Completion completion);
  bool isCampaignReady(const std::string& placementID);
  void canView(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue, Completion completion);
  void autoCachingTimerHandler();
  void showCampaign(const std::string& forPlacement, std::optional<VantoriumServerParameter> serverParameter,
                    Completion completion);
  void showOfferWall(const std::string& forPlacement, std::optional<VantoriumServerParameter> serverParameter,
                     Completion completion);
  void showRewardablePopup(const std::string& forPlacement,
                           std::optional<VantoriumServerParameter> serverParameter, Completion completion);
  void precacheRewardablePopupTemplate(std::shared_ptr<DispatchQueue> queue, Completion completion);

  void precacheNativeAds(const std::string& forPlacement, std::shared_ptr<VantoriumNativeAdOptions> options,
                         std::shared_ptr<DispatchQueue> queue, NativeAdPrecacher::Completion completion);
  void populateNativeAdView(const std::shared_ptr<VantoriumNativeAdView>& view,
                            const std::shared_ptr<VantoriumNativeAd>& with, const AdOptions& options,
                            const Completion& completion);
  void reportNativeAdImpression(const std::string& impressionID);
  void reportNativeAdClick(const std::string& impressionID,
                           const std::optional<VantoriumServerParameter>& serverParameter);
  void reportNativeAdVideoStarted(const std::string& impressionID);
  void reportNativeAdVideoEnded(const std::string& impressionID);

  /// Takes a screen that is shown away, ends every exchange with its one completion and stops the network,
  /// within a second. The SDK is not to be used afterwards. Main thread; may be called twice.
  void shutdown() EXCLUDES(mutex_);

  /// The services, made on first use. Any thread.
  std::shared_ptr<const Client> client() EXCLUDES(mutex_);

 private:
  struct Identity {
    std::string appID, userID;
  };
  /// All that is made on first use.
  struct Services {
    std::string widgetURL;
    Client client;
    std::shared_ptr<CampaignPrecacher> precacher;
    std::shared_ptr<NativeAdPrecacher> nativeAdPrecacher;
    std::shared_ptr<AutoCaching> autoCaching;
    std::shared_ptr<void> onlineObservation;
  };

  void wire();
  std::shared_ptr<const Services> services() EXCLUDES(mutex_);
  void makeServices() EXCLUDES(mutex_);
  void didSetUp(const Identity& identity, bool success,
                const std::optional<HTTPClient::Placements>& placements, const std::optional<Error>& error)
      EXCLUDES(mutex_);
  void startAutoCaching(const HTTPClient::Placements& placements);
  void uploadError(const std::string& text) EXCLUDES(mutex_);
  std::optional<std::string> userID() EXCLUDES(mutex_);

  static Error shutDownWhileShowing();
  std::optional<Error> refusalToShow() const;
  std::optional<Error> refusalToGoOnline();
  /// An ad is being shown from here on, until the mark is cleared or goes.
  std::shared_ptr<FlagMark> beginShowing(std::optional<std::string> placement);
  void show(const std::shared_ptr<FlagMark>& mark, const std::shared_ptr<BaseViewController>& screen,
            std::optional<VantoriumServerParameter> serverParameter, Completion completion);
  void showReady(const std::shared_ptr<FlagMark>& mark, const std::string& placement, ReadyCampaign ready,
                 std::optional<VantoriumServerParameter> serverParameter, Completion completion);
  void showPreparedPopup(const std::shared_ptr<FlagMark>& mark, const std::string& placement,
                         const PreparedPopup& popup,
                         const std::optional<VantoriumServerParameter>& serverParameter,
                         const Completion& completion);

  const std::shared_ptr<SdkContext> context_;
  const std::thread::id mainThread_ = std::this_thread::get_id();
  /// Main thread only. One, unless the application has said that none is shown while one was.
  std::vector<std::weak_ptr<BaseViewController>> shownScreens_;
  bool hasEnded_ = false;  ///< main thread only

  std::once_flag servicesMade_;
  Mutex mutex_;
  bool isInUse_ GUARDED_BY(mutex_) = false;
  ServiceConfiguration configuration_ GUARDED_BY(mutex_);
  std::shared_ptr<const Services> services_ GUARDED_BY(mutex_);
  std::optional<Identity> identity_ GUARDED_BY(mutex_);  ///< of the last completed init exchange
};

}  // namespace vantorium
