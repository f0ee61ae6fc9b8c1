// GET /api/offers/PLACEMENT and GET /api/rewardedPopup
#include "sandbox/endpoints/ad_list.hpp"
#include "sandbox/endpoints/rules.hpp"

namespace vantorium::sandbox {
namespace {

Answer offer(const Service& service, const Call& call) {
  auto offered = service.catalogue.offer(call.tail);
  if (!offered) return failure("No offers available.");
  handOut(service, call.tail, *offered);
  return success(*offered);
}

Answer popup(const Service& service, const Call&) {
  const auto page = service.catalogue.popupTemplate();
  if (!page) return {.status = 404, .contentType = "text/html", .body = {"<h1>No popup template</h1>"}};
  return {.contentType = "text/html; charset=utf-8", .body = {*page}};
}

}  // namespace

std::vector<Endpoint> offerEndpoints() {
  return {
      {"/api/offers/", {"GET", true, true, true}, nullptr, &offer, errorEnvelope("No offers available.")},
      {"/api/rewardedPopup", {"GET", true, false, true}, nullptr, &popup, ""},
  };
}

}  // namespace vantorium::sandbox
