// GET /api/campaigns
#include <fmt/format.h>

#include <algorithm>

#include "sandbox/endpoints/ad_list.hpp"
#include "sandbox/endpoints/rules.hpp"

namespace vantorium::sandbox {
namespace {

using nlohmann::json;

bool isCached(const Call& call, const json& campaign) {
  return std::any_of(call.query.begin(), call.query.end(), [&](const auto& item) {
    return item.first == "cachedCampaignIds" && item.second == campaign.value("campaignId", json());
  });
}

Answer campaigns(const Service& service, const Call& call) {
  const std::string placement = call.queryValue("placementId").value_or("");
  auto offered = service.catalogue.campaigns(placement);
  if (!offered) return failure(fmt::format("Unknown placement \"{}\".", placement));
  // What the device does not have yet comes first; a creative it has may come again, as a new impression.
  auto& list = offered->get_ref<json::array_t&>();
  std::stable_partition(list.begin(), list.end(),
                        [&](const json& campaign) { return !isCached(call, campaign); });
  handOut(service, call, placement, list);
  return success({{"data", *offered}});
}

}  // namespace

std::vector<Endpoint> campaignEndpoints() {
  return {{"/api/campaigns",
           {"GET", true, true, true},
           [](const Call& call, Violations& out) { checkAdQuery(call, "", out); },
           &campaigns,
           {{"status", "success"}, {"data", json::array()}}}};
}

}  // namespace vantorium::sandbox
