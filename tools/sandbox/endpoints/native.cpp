// GET /api/sdk/native
#include <charconv>

#include "sandbox/endpoints/rules.hpp"

namespace vantorium::sandbox {
namespace {

Answer nativeAds(const Service& service, const Call& call) {
  const std::string placement = call.queryValue("placementId").value_or("");
  auto offered = service.catalogue.nativeAds(placement);
  if (!offered || offered->empty()) return failure("No native ads available.");
  const std::string number = call.queryValue("numOfCampaigns").value_or("");
  size_t wanted = 0;
  std::from_chars(number.data(), number.data() + number.size(), wanted);
  auto& list = offered->get_ref<nlohmann::json::array_t&>();
  if (list.size() > wanted) list.resize(wanted);
  for (auto& ad : list) ad["impressionId"] = service.ledger.newImpression(placement);
  return success({{"result", *offered}});
}

}  // namespace

std::vector<Endpoint> nativeEndpoints() {
  return {{"/api/sdk/native",
           {"GET", true, true, true},
           [](const Call& call, Violations& out) { checkAdQuery(call, true, out); },
           &nativeAds,
           {{"status", "success"}, {"result", nlohmann::json::array()}}}};
}

}  // namespace vantorium::sandbox
