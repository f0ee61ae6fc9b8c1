#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "sandbox/endpoints/endpoint.hpp"

namespace vantorium::sandbox {

/// Method, headers, token, presence of a body, and the characters of the target.
void checkShape(const Endpoint& endpoint, const Service& service, const Call& call, Violations& violations);

/// Whether all characters of the target are escaped that have to be.
void checkTarget(const std::string& target, Violations& violations);

/// An upper-case, hyphenated one.
bool isUUID(const std::string& text);

/// placementId, connectionType and numOfCampaigns once each, cachedCampaignIds any number of times, and
/// `last` at most once; in this order. An empty `last` is none.
void checkAdQuery(const Call& call, std::string_view last, Violations& violations);

/// The device-information body; with `log`, that of an error report.
void checkDeviceBody(const Call& call, bool log, Violations& violations);

}  // namespace vantorium::sandbox
