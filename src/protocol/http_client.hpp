#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/error.hpp>

#include "context/sdk_context.hpp"
#include "device/reachability.hpp"
#include "device/user_defaults.hpp"
#include "model/campaign.hpp"
#include "model/native_ad.hpp"
#include "model/rewardable_offer.hpp"
#include "platform/foundation/data.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "platform/net/http_session.hpp"

namespace vantorium {

/// The only talker to the advertising service: each operation is one request and one call of its completion.
/// Any thread. What fails before a request is sent completes on the caller's thread, all else on the
/// session's callback queue; a request under way keeps the client alive until then.
///
/// Nothing is retried, and the HTTP status is never looked at: the body decides.
class HTTPClient : public std::enable_shared_from_this<HTTPClient> {
 public:
  using Placements = std::vector<std::map<std::string, std::string>>;
  using SetUpCompletion =
      std::function<void(bool success, std::optional<Placements> placements, std::optional<Error> error)>;
  using DataCompletion = std::function<void(std::optional<Data> data, std::optional<Error> error)>;
  using CampaignsCompletion =
      std::function<void(std::vector<std::shared_ptr<Campaign>> campaigns, std::optional<Error> error)>;
  using NativeAdsCompletion =
      std::function<void(std::vector<std::shared_ptr<VantoriumNativeAd>> ads, std::optional<Error> error)>;
  using OfferCompletion =
      std::function<void(std::shared_ptr<RewardableOffer> offer, std::optional<Error> error)>;
  using TextCompletion = std::function<void(std::optional<std::string> text, std::optional<Error> error)>;
  using Completion = std::function<void(bool success, std::optional<Error> error)>;

  /// `baseURL` is one that `checkServiceURL` accepts. `reachability` may be null. `defaults` tell error
  /// reports the dates of installation and update.
  HTTPClient(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPSession> session, std::string baseURL,
             std::shared_ptr<const VantoriumReachability> reachability,
             std::shared_ptr<const UserDefaults> defaults);

  const std::string& baseURL() const { return baseURL_; }
  /// Null where the platform offers no monitor.
  const std::shared_ptr<const VantoriumReachability>& reachability() const { return reachability_; }
  /// Handed out by the service at start; without it nothing but `setUp`, `downloadFile` and `logError` is
  /// sent.
  std::optional<std::string> sessionToken() const EXCLUDES(mutex_);

  /// The init exchange: keeps the session token and takes over the test mode.
  void setUp(const nlohmann::json& withParams, const SetUpCompletion& completion);
  /// Fetches whatever is at the URL. The platform is asked to let the download end in the background.
  void downloadFile(const std::string& fromURL, DataCompletion completion);

  /// Fetches what is at the URL, at most so many bytes, as long as it is wanted: dropping the returned task
  /// cancels it. The completion is called once in any case.
  [[nodiscard]] std::shared_ptr<void> dataTask(const std::string& withURL, std::uint64_t mostBytes,
                                               DataCompletion completion);

  void getCampaigns(const std::string& forPlacement, int numberOfCampaigns,
                    const std::vector<std::string>& cachedCampaingIDs, const CampaignsCompletion& completion);
  void getNativeAds(const std::string& placementID, const std::map<std::string, std::string>& parameters,
                    int numberOfAds, const std::vector<std::string>& cachedNativeAdIDs,
                    const NativeAdsCompletion& completion);
  /// What the placement's rewardable popup offers at the moment.
  void getRewardableOffer(const std::string& forPlacement, const OfferCompletion& completion);
  /// The template of rewardable popups: whatever text the service sends, up to `largestTemplate` bytes.
  void getRewardablePopup(const TextCompletion& completion);
  static constexpr std::size_t largestTemplate = std::size_t{4} << 20U;
  /// Whether an ad of the placement may be shown; (false, none) is a refusal, not a failure.
  void canView(const std::string& forPlacement, const Completion& completion);
  /// Whether the reward of an ad of the placement may be granted.
  void canReward(const std::string& forPlacement, const Completion& completion);
  /// Uploads an error report; whatever becomes of it is ignored.
  void logError(const std::string& withAppID, const std::string& userID, const std::string& errorMessage);

  /// Event reports. Without a completion the answer is not read.
  void reportImpression(const std::string& forImpression, const Completion& completion = nullptr);
  void reportVideoStarted(const std::string& forImpression, const Completion& completion = nullptr);
  void reportFinished(const std::string& forImpression, const Completion& completion = nullptr);
  void reportClick(const std::string& forImpression,
                   const std::optional<std::map<std::string, std::string>>& params = std::nullopt,
                   const Completion& completion = nullptr);

 private:
  struct Endpoint;

  std::optional<Error> send(const Endpoint& endpoint, HTTPSession::Completion completion);
  std::string adsURL(const std::string& path, const std::string& placement, int number,
                     const std::vector<std::string>& cachedIDs) const;
  void ask(const std::string& path, const std::string& placement, const Completion& completion);
  void report(const std::string& forURL, const Completion& completion);
  void setSessionToken(std::optional<std::string> token) EXCLUDES(mutex_);

  const std::shared_ptr<SdkContext> context_;
  const std::shared_ptr<HTTPSession> session_;
  const std::string baseURL_;
  const std::shared_ptr<const VantoriumReachability> reachability_;
  const std::shared_ptr<const UserDefaults> defaults_;
  mutable Mutex mutex_;
  std::optional<std::string> sessionToken_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
