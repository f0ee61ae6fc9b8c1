// POST /api/impressions/IMPRESSION and its forms /started, /finished and /click?…
#include <fmt/format.h>

#include "sandbox/endpoints/rules.hpp"

namespace vantorium::sandbox {
namespace {

struct Report {
  std::string impression;
  std::string kind;
};

Report parse(const Call& call) {
  const size_t slash = call.tail.find('/');
  if (slash == std::string::npos) return {call.tail, "impression"};
  return {call.tail.substr(0, slash), call.tail.substr(slash + 1)};
}

void check(const Call& call, Violations& violations) {
  const auto [impression, kind] = parse(call);
  if (kind != "impression" && kind != "started" && kind != "finished" && kind != "click") {
    violations.push_back(
        fmt::format("there is no report \"{}\": an impression has started, finished and click", kind));
  }
  if (kind == "click" && !call.hasQuery) violations.emplace_back("a click's path must be followed by \"?\"");
  if (kind != "click" && call.hasQuery) violations.push_back(fmt::format("\"{}\" takes no query", kind));
}

Answer report(const Service& service, const Call& call) {
  const auto [impression, kind] = parse(call);
  const auto counted = service.ledger.count(impression, kind);
  if (!counted) return failure(fmt::format("Unknown impression \"{}\".", impression), 404);
  nlohmann::json query = nlohmann::json::object();
  for (const auto& [key, value] : call.query) query[key] = value;
  service.journal.addEvent({{"kind", kind},
                            {"impression", impression},
                            {"placement", counted->placement},
                            {"query", query},
                            {"count", counted->count}});
  return success();
}

}  // namespace

std::vector<Endpoint> impressionEndpoints() {
  return {{"/api/impressions/",
           {"POST", true, false, true},
           &check,
           &report,
           errorEnvelope("Nothing to count.")}};
}

}  // namespace vantorium::sandbox
