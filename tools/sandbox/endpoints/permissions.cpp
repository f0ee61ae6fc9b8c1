// GET /api/canView/PLACEMENT and GET /api/canReward/PLACEMENT: a bare word.
#include "sandbox/endpoints/rules.hpp"

namespace vantorium::sandbox {
namespace {

Answer bare(std::string word) {
  return {.contentType = "text/plain; charset=utf-8", .body = {std::move(word)}};
}

}  // namespace

std::vector<Endpoint> permissionEndpoints() {
  const Shape shape{"GET", false, false, true};
  return {
      {"/api/canView/", shape, nullptr,
       [](const Service& service, const Call& call) { return bare(service.catalogue.canView(call.tail)); },
       "false"},
      {"/api/canReward/", shape, nullptr,
       [](const Service& service, const Call& call) { return bare(service.catalogue.canReward(call.tail)); },
       "false"},
  };
}

}  // namespace vantorium::sandbox
