#pragma once

#include <atomic>
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
#include "model/campaign.hpp"
#include "model/native_ad.hpp"
#include "model/rewardable_offer.hpp"
#include "platform/foundation/data.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "platform/net/http_session.hpp"
#include "protocol/client_device.hpp"

namespace vantorium {

/// The only talker to the advertising service: each operation is one request and one call of its completion.
/// Any thread. What fails before a request is sent completes on the caller's thread, all else on the
/// session's callback queue; a request under way keeps the client alive until then.
///
/// A report of which not one byte had left is sent again, later; nothing else is. The HTTP status is never
/// looked at: the body decides.
class HTTPClient : public std::enable_shared_from_this<HTTPClient> {
 public:
  using Placements = std::vector<std::map<std::string, std::string>>;
  using SetUpCompletion =
      std::function<void(bool success, std::optional<Placements> placements, std::optional<Error> error)>;
  using CampaignsCompletion =
      std::function<void(std::vector<std::shared_ptr<Campaign>> campaigns, std::optional<Error> error)>;
  using NativeAdsCompletion =
      std::function<void(std::vector<std::shared_ptr<VantoriumNativeAd>> ads, std::optional<Error> error)>;
  using OfferCompletion =
      std::function<void(std::shared_ptr<RewardableOffer> offer, std::optional<Error> error)>;
  using TextCompletion = std::function<void(std::optional<std::string> text, std::optional<Error> error)>;
  using Completion = std::function<void(bool success, std::optional<Error> error)>;

  /// The largest answer of the service that is taken; a larger one ends as a transport error. Bytes.
  static constexpr std::uint64_t largestAnswer = std::uint64_t{4} << 20U;
  /// The path and query of a request for ads stay below so many bytes, as they are sent.
  static constexpr std::size_t longestTarget = 4096;

  /// `baseURL` is one that `checkServiceURL` accepts.
  HTTPClient(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPSession> session, std::string baseURL,
             ClientDevice device);

  const std::string& baseURL() const { return baseURL_; }
  /// Handed out by the service at start; without it nothing but `setUp` and `logError` is sent.
  std::optional<std::string> sessionToken() const EXCLUDES(mutex_);

  /// The init exchange: keeps the session token and takes over the test mode.
  void setUp(const nlohmann::json& withParams, const SetUpCompletion& completion);

  void getCampaigns(const std::string& forPlacement, int numberOfCampaigns,
                    const std::vector<std::string>& cachedCampaingIDs, const CampaignsCompletion& completion);
  void getNativeAds(const std::string& placementID, const std::map<std::string, std::string>& parameters,
                    int numberOfAds, const std::vector<std::string>& cachedNativeAdIDs,
                    const NativeAdsCompletion& completion);
  /// What the placement's rewardable popup offers at the moment.
  void getRewardableOffer(const std::string& forPlacement, const OfferCompletion& completion);
  /// The template of rewardable popups: whatever text the service sends.
  void getRewardablePopup(const TextCompletion& completion);
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
  struct Report;

  std::optional<Error> send(const Endpoint& endpoint, HTTPSession::Completion completion);
  void ask(const std::string& path, const std::string& placement, const Completion& completion);
  void report(const std::string& forURL, const Completion& completion);
  void send(const std::shared_ptr<Report>& report);
  bool sendAgain(const std::shared_ptr<Report>& report, const HTTPAnswer& answer);
  void finish(const Report& report, const HTTPAnswer& answer);
  void setSessionToken(std::optional<std::string> token) EXCLUDES(mutex_);

  const std::shared_ptr<SdkContext> context_;
  const std::shared_ptr<HTTPSession> session_;
  const std::string baseURL_;
  const ClientDevice device_;
  std::atomic<int> waitingReports_{0};
  mutable Mutex mutex_;
  std::optional<std::string> sessionToken_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
