// GET /api/campaigns
#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "sandbox/endpoints/rules.hpp"

namespace vantorium::sandbox {
namespace {

using nlohmann::json;

bool isCached(const Call& call, const json& campaign) {
  return std::any_of(call.query.begin(), call.query.end(), [&](const auto& item) {
    return item.first == "cachedCampaignIds" && item.second == campaign.value("campaignId", json());
  });
}

size_t wanted(const Call& call) {
  const std::string text = call.queryValue("numOfCampaigns").value_or("");
  size_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

Answer campaigns(const Service& service, const Call& call) {
  const std::string placement = call.queryValue("placementId").value_or("");
  auto offered = service.catalogue.campaigns(placement);
  if (!offered) return failure(fmt::format("Unknown placement \"{}\".", placement));
  // What the device does not have yet comes first; a creative it has may come again, as a new impression.
  auto& list = offered->get_ref<json::array_t&>();
  std::stable_partition(list.begin(), list.end(),
                        [&](const json& campaign) { return !isCached(call, campaign); });
  if (list.size() > wanted(call)) list.resize(wanted(call));
  for (auto& campaign : list) {
    if (!campaign.contains("impressionId")) {
      campaign["impressionId"] = service.ledger.newImpression(placement);
    } else if (campaign["impressionId"].is_string()) {
      service.ledger.addImpression(campaign["impressionId"].get<std::string>(), placement);
    }
  }
  return success({{"data", *offered}});
}

}  // namespace

std::vector<Endpoint> campaignEndpoints() {
  return {{"/api/campaigns",
           {"GET", true, true, true},
           [](const Call& call, Violations& out) { checkAdQuery(call, false, out); },
           &campaigns,
           {{"status", "success"}, {"data", json::array()}}}};
}

}  // namespace vantorium::sandbox
