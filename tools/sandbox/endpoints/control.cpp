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

}  // namespace

Answer controlAnswer(const Call& call, Journal& journal, Ledger& ledger, FaultTable& faults) {
  const std::string operation = call.request.method + " " + call.path;
  if (operation == "GET /sandbox/requests") return jsonAnswer(journal.requests());
  if (operation == "GET /sandbox/events") return jsonAnswer(journal.events());
  if (call.path == "/sandbox/faults" &&
      (call.request.method == "GET" || call.request.method == "POST" || call.request.method == "DELETE")) {
    return faultsAnswer(call, faults);
  }
  if (operation == "POST /sandbox/reset") {
    journal.clear();
    ledger.forgetImpressions();
    faults.clear();
    return success();
  }
  return failure(
      fmt::format("There is no {}. There are GET /sandbox/requests, GET /sandbox/events, GET, POST and "
                  "DELETE /sandbox/faults, and POST /sandbox/reset.",
                  operation),
      404);
}

}  // namespace vantorium::sandbox
