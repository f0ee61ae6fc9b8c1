// POST /api/init and POST /api/logError: the two that need no token.
#include "sandbox/endpoints/rules.hpp"

namespace vantorium::sandbox {
namespace {

Answer init(const Service& service, const Call&) {
  nlohmann::json answer = service.catalogue.initAnswer();
  fillIn(answer, "{{session}}", randomHex(12));
  if (answer.is_object() && answer.contains("token") && answer["token"].is_string()) {
    service.ledger.addToken(answer["token"].get<std::string>());
  }
  return jsonAnswer(answer);
}

}  // namespace

std::vector<Endpoint> sessionEndpoints() {
  const Shape anonymous{"POST", true, false, false};
  return {
      {"/api/init", anonymous, [](const Call& call, Violations& out) { checkDeviceBody(call, false, out); },
       &init, errorEnvelope("No placements available.")},
      {"/api/logError", anonymous,
       [](const Call& call, Violations& out) { checkDeviceBody(call, true, out); },
       [](const Service&, const Call&) { return success(); }, errorEnvelope("Nothing to log.")},
  };
}

}  // namespace vantorium::sandbox
