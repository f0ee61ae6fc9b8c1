// GET /api/sdk/native
#include "sandbox/endpoints/ad_list.hpp"
#include "sandbox/endpoints/rules.hpp"

namespace vantorium::sandbox {
namespace {

using nlohmann::json;

// A list too long to be written down: {"copies": 1000, "of": {…}}, in which "{{number}}" counts from 1.
void writeOut(json& list) {
  if (!list.is_object() || !list.contains("of")) return;
  json copies = json::array();
  for (int number = 1; number <= list.value("copies", 0); ++number) {
    fillIn(copies.emplace_back(list["of"]), "{{number}}", std::to_string(number));
  }
  list = std::move(copies);
}

Answer nativeAds(const Service& service, const Call& call) {
  const std::string placement = call.queryValue("placementId").value_or("");
  auto offered = service.catalogue.nativeAds(placement);
  if (!offered || offered->empty()) return failure("No native ads available.");
  auto& ads = offered->get_ref<json::array_t&>();
  handOut(service, call, placement, ads);
  for (auto& ad : ads) {
    if (ad.contains("assets")) writeOut(ad["assets"]);
  }
  return success({{"result", *offered}});
}

}  // namespace

std::vector<Endpoint> nativeEndpoints() {
  return {{"/api/sdk/native",
           {"GET", true, true, true},
           [](const Call& call, Violations& out) { checkAdQuery(call, "creativeType", out); },
           &nativeAds,
           {{"status", "success"}, {"result", json::array()}}}};
}

}  // namespace vantorium::sandbox
