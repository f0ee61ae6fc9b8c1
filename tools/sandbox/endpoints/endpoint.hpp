#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "sandbox/service/answer.hpp"
#include "sandbox/service/call.hpp"
#include "sandbox/service/catalogue.hpp"
#include "sandbox/service/journal.hpp"
#include "sandbox/service/ledger.hpp"
#include "sandbox/service/variety.hpp"

namespace vantorium::sandbox {

/// What endpoints work with; outlives every request.
struct Service {
  Catalogue& catalogue;
  Ledger& ledger;
  Journal& journal;
  Variety& variety;
};

/// How a request must look, headers that must be absent included.
struct Shape {
  const char* method;
  bool contentType;
  bool userAgent;
  bool authorization;
};

using Violations = std::vector<std::string>;

/// One endpoint. A path that ends in "/" stands for all paths below it, and only with `whole` for itself; the
/// rest is the call's `tail`.
struct Endpoint {
  std::string path;
  Shape shape;
  std::function<void(const Call&, Violations&)> check;  ///< Rules beyond the shape; may be empty.
  std::function<Answer(const Service&, const Call&)> answer;
  nlohmann::json noFill;  ///< What it answers when it has nothing to offer; a string is sent bare.
  bool whole = false;     ///< The path is meant as it is, also when it ends in "/".

  bool matches(const std::string& wanted) const {
    const bool below = path.ends_with('/') && !whole;
    return below ? wanted.starts_with(path) && wanted.size() > path.size() : wanted == path;
  }
};

// The families, one file each.
std::vector<Endpoint> sessionEndpoints();     ///< init, logError
std::vector<Endpoint> campaignEndpoints();    ///< campaigns
std::vector<Endpoint> nativeEndpoints();      ///< sdk/native
std::vector<Endpoint> offerEndpoints();       ///< offers, rewardedPopup
std::vector<Endpoint> permissionEndpoints();  ///< canView, canReward
std::vector<Endpoint> impressionEndpoints();  ///< impressions
std::vector<Endpoint> widgetEndpoints();      ///< the offer wall's page, outside /api/
/// Everything else outside /api/: files of the catalogue.
Endpoint fileEndpoint();

/// The answer's noFill for services that say so in an envelope.
inline nlohmann::json errorEnvelope(const char* text) { return {{"status", "error"}, {"error", text}}; }

}  // namespace vantorium::sandbox
