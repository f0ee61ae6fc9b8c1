#include "sandbox/endpoints/ad_list.hpp"

#include <charconv>

namespace vantorium::sandbox {
namespace {

size_t wanted(const Call& call) {
  const std::string text = call.queryValue("numOfCampaigns").value_or("");
  size_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

}  // namespace

void handOut(const Service& service, const Call& call, const std::string& placement,
             nlohmann::json::array_t& ads) {
  if (ads.size() > wanted(call)) ads.resize(wanted(call));
  for (auto& ad : ads) handOut(service, placement, ad);
}

void handOut(const Service& service, const std::string& placement, nlohmann::json& ad) {
  service.variety.vary(ad);
  if (!ad.contains("impressionId")) {
    ad["impressionId"] = service.ledger.newImpression(placement);
  } else if (ad["impressionId"].is_string()) {
    service.ledger.addImpression(ad["impressionId"].get<std::string>(), placement);
  }
}

}  // namespace vantorium::sandbox
