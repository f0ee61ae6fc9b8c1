#include "sandbox/endpoints/control.hpp"

#include <fmt/format.h>

#include <stdexcept>

namespace vantorium::sandbox {
namespace {

Answer setFaults(const Call& call, FaultTable& faults) {
  try {
    faults.set(parseFaults(call.body));
    return success({{"faults", faults.list()}});
  } catch (const std::invalid_argument& error) {
    return failure(error.what(), 400);
  }
}

Answer faultsAnswer(const Call& call, FaultTable& faults) {
  if (call.request.method == "POST") return setFaults(call, faults);
  if (call.request.method == "DELETE") faults.clear();
  return success({{"faults", faults.list()}, {"known", knownFaults()}});
}

// Posted, it lists impressions to tell of.
Answer tallyAnswer(const Call& call, const Operated& operated) {
  nlohmann::json tally = operated.tally.summary();
  tally["handedOut"] = operated.variety.count();
  if (call.request.method == "GET") return jsonAnswer(tally);
  const auto asked = call.body.is_object() ? call.body.find("impressions") : call.body.end();
  if (asked == call.body.end() || !asked->is_array()) {
    return failure(R"(expected an object such as {"impressions":["ad-1"]})", 400);
  }
  tally["impressions"] = operated.tally.reports(*asked);
  return jsonAnswer(tally);
}

Answer reset(const Operated& operated) {
  operated.journal.clear();
  operated.ledger.forgetImpressions();
  operated.faults.clear();
  operated.tally.clear();
  return success();
}

}  // namespace

Answer controlAnswer(const Call& call, const Operated& operated) {
  const std::string& method = call.request.method;
  const std::string operation = method + " " + call.path;
  if (operation == "GET /sandbox/requests") return jsonAnswer(operated.journal.requests());
  if (operation == "GET /sandbox/events") return jsonAnswer(operated.journal.events());
  if (call.path == "/sandbox/faults" && (method == "GET" || method == "POST" || method == "DELETE")) {
    return faultsAnswer(call, operated.faults);
  }
  if (call.path == "/sandbox/tally" && (method == "GET" || method == "POST"))
    return tallyAnswer(call, operated);
  if (operation == "POST /sandbox/reset") return reset(operated);
  return failure(
      fmt::format("There is no {}. There are GET /sandbox/requests, GET /sandbox/events, GET and POST "
                  "/sandbox/tally, GET, POST and DELETE /sandbox/faults, POST /sandbox/outage and POST "
                  "/sandbox/reset.",
                  operation),
      404);
}

}  // namespace vantorium::sandbox
