// The exchanges of the client that bring ads.
#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "protocol/endpoint.hpp"
#include "protocol/envelope.hpp"

namespace vantorium {

using nlohmann::json;

namespace {

/// Far more than is ever asked for: each costs downloads.
constexpr std::size_t mostAds = 50;

/// The ads under `key` of an answer, each made by `make`, the first fifty at most; when there are none, the
/// envelope turns into that failure.
template <typename Make>
auto takeAds(Envelope& envelope, const char* key, const char* noneAvailable, const Make& make) {
  std::vector<decltype(make(json()))> ads;
  if (!envelope.object) return ads;
  const auto list = envelope.object->find(key);
  const bool isSound = list != envelope.object->end() && list->is_array() &&
                       std::ranges::all_of(*list, [](const json& one) { return one.is_object(); });
  if (!isSound) {
    envelope = Envelope::broken();
  } else if (list->empty()) {
    envelope = {.error = VantoriumError::internalError(noneAvailable)};
  } else {
    for (auto one = list->begin(); one != list->end() && ads.size() < mostAds; ++one) {
      ads.push_back(make(*one));
    }
  }
  return ads;
}

}  // namespace

/// Where ads are asked for; `reachability` is there.
std::string HTTPClient::adsURL(const std::string& path, const std::string& placement, int number,
                               const std::vector<std::string>& cachedIDs) const {
  std::string url = fmt::format("{}{}?placementId={}&connectionType={}&numOfCampaigns={}", baseURL_, path,
                                placement, reachability_->currentReachabilityTechnologyString(), number);
  for (const std::string& id : cachedIDs) url += "&cachedCampaignIds=" + id;
  return url;
}

void HTTPClient::getCampaigns(const std::string& forPlacement, int numberOfCampaigns,
                              const std::vector<std::string>& cachedCampaingIDs,
                              const CampaignsCompletion& completion) {
  if (!reachability_) {
    completion({}, VantoriumError::internalError());
    return;
  }
  const auto finish = [context = context_, completion](const auto& body, const auto& transportError) {
    Envelope envelope = Envelope::read(body, transportError);
    auto campaigns = takeAds(envelope, "data", "No campaigns available at the moment.",
                             [](const json& one) { return std::make_shared<Campaign>(one); });
    if (envelope.flaw == Envelope::Flaw::notJSON) context->logError(envelope.error->errorMessage());
    completion(std::move(campaigns), envelope.error);
    if (envelope.flaw == Envelope::Flaw::broken)
      context->logError(
          invalidResponseLine("Invalid server response from /api/campaigns/ Response: ", *body));
  };
  const Endpoint endpoint{.url = adsURL("/api/campaigns", forPlacement, numberOfCampaigns, cachedCampaingIDs),
                          .hasContentType = true,
                          .hasUserAgent = true,
                          .isAuthorized = true};
  if (const auto error = send(endpoint, finish)) completion({}, error);
}

void HTTPClient::getNativeAds(const std::string& placementID,
                              const std::map<std::string, std::string>& parameters, int numberOfAds,
                              const std::vector<std::string>& cachedNativeAdIDs,
                              const NativeAdsCompletion& completion) {
  if (!sessionToken() || !reachability_) {
    completion({}, sessionToken() ? VantoriumError::internalError() : VantoriumError::notConfigured());
    return;
  }
  std::string url = adsURL("/api/sdk/native", placementID, numberOfAds, cachedNativeAdIDs);
  for (const auto& [key, value] : parameters) url.append("&").append(key).append("=").append(value);
  const auto finish = [context = context_, placementID, completion](const auto& body,
                                                                    const auto& transportError) {
    Envelope envelope = Envelope::read(body, transportError);
    auto ads = takeAds(envelope, "result", "No native ads available at the moment.",
                       [&](const json& one) { return makeNativeAd(one, placementID); });
    if (envelope.flaw == Envelope::Flaw::notJSON) context->logError(envelope.error->errorMessage());
    completion(std::move(ads), envelope.error);
    if (envelope.flaw == Envelope::Flaw::broken)
      context->logError(
          invalidResponseLine("Invalid server response from /api/nativeads/ Response: ", *body));
  };
  const Endpoint endpoint{.url = url, .hasContentType = true, .hasUserAgent = true, .isAuthorized = true};
  if (const auto error = send(endpoint, finish)) completion({}, error);
}

}  // namespace vantorium
