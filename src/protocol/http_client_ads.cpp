// The exchanges of the client that bring ads.
#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>

#include "platform/foundation/url.hpp"
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

std::size_t lengthAsSent(const std::string& text) { return urlEncodedString(text).value_or(text).size(); }

/// The path and query of a request for ads.
std::string adsTarget(const std::string& path, const std::string& placement, const std::string& connection,
                      int number, const std::vector<std::string>& cachedIDs,
                      const std::string& parameters = {}) {
  std::string target = fmt::format("{}?placementId={}&connectionType={}&numOfCampaigns={}", path, placement,
                                   connection, number);
  std::size_t length = lengthAsSent(target) + lengthAsSent(parameters);
  std::set<std::string_view> told;
  for (const std::string& id : cachedIDs) {
    const std::string pair = "&cachedCampaignIds=" + id;
    const std::size_t added = lengthAsSent(pair);
    if (length + added >= HTTPClient::longestTarget || !told.insert(id).second) continue;
    target += pair;
    length += added;
  }
  return target + parameters;
}

}  // namespace

void HTTPClient::getCampaigns(const std::string& forPlacement, int numberOfCampaigns,
                              const std::vector<std::string>& cachedCampaingIDs,
                              const CampaignsCompletion& completion) {
  const auto connection = device_.connectionType();
  if (!connection) {
    completion({}, VantoriumError::internalError());
    return;
  }
  const auto finish = [context = context_, completion](const HTTPAnswer& answer) {
    Envelope envelope = Envelope::read(answer);
    auto campaigns = takeAds(envelope, "data", "No campaigns available at the moment.",
                             [](const json& one) { return std::make_shared<Campaign>(one); });
    if (envelope.flaw == Envelope::Flaw::notJSON) context->logError(envelope.error->errorMessage());
    completion(std::move(campaigns), envelope.error);
    if (envelope.flaw == Envelope::Flaw::broken)
      context->logError(
          invalidResponseLine("Invalid server response from /api/campaigns/ Response: ", *answer.body));
  };
  const Endpoint endpoint{.url = baseURL_ + adsTarget("/api/campaigns", forPlacement, *connection,
                                                      numberOfCampaigns, cachedCampaingIDs),
                          .hasContentType = true,
                          .hasUserAgent = true,
                          .isAuthorized = true};
  if (const auto error = send(endpoint, finish)) completion({}, error);
}

void HTTPClient::getNativeAds(const std::string& placementID,
                              const std::map<std::string, std::string>& parameters, int numberOfAds,
                              const std::vector<std::string>& cachedNativeAdIDs,
                              const NativeAdsCompletion& completion) {
  const auto connection = device_.connectionType();
  if (!sessionToken() || !connection) {
    completion({}, sessionToken() ? VantoriumError::internalError() : VantoriumError::notConfigured());
    return;
  }
  std::string query;
  for (const auto& [key, value] : parameters) query.append("&").append(key).append("=").append(value);
  const auto finish = [context = context_, placementID, completion](const HTTPAnswer& answer) {
    Envelope envelope = Envelope::read(answer);
    auto ads = takeAds(envelope, "result", "No native ads available at the moment.",
                       [&](const json& one) { return makeNativeAd(one, placementID); });
    if (envelope.flaw == Envelope::Flaw::notJSON) context->logError(envelope.error->errorMessage());
    completion(std::move(ads), envelope.error);
    if (envelope.flaw == Envelope::Flaw::broken)
      context->logError(
          invalidResponseLine("Invalid server response from /api/nativeads/ Response: ", *answer.body));
  };
  const Endpoint endpoint{.url = baseURL_ + adsTarget("/api/sdk/native", placementID, *connection,
                                                      numberOfAds, cachedNativeAdIDs, query),
                          .hasContentType = true,
                          .hasUserAgent = true,
                          .isAuthorized = true};
  if (const auto error = send(endpoint, finish)) completion({}, error);
}

}  // namespace vantorium
