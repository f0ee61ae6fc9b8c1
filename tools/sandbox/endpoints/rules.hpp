#pragma once

#include <initializer_list>
#include <string_view>

#include "sandbox/endpoints/endpoint.hpp"

namespace vantorium::sandbox {

/// Method, headers, token, presence of a body, and the characters of the target.
void checkShape(const Endpoint& endpoint, const Service& service, const Call& call, Violations& violations);

/// placementId, connectionType and numOfCampaigns once each, cachedCampaignIds any number of times. `open`
/// admits more.
void checkAdQuery(const Call& call, bool open, Violations& violations);

/// The device-information body; with `log`, that of an error report.
void checkDeviceBody(const Call& call, bool log, Violations& violations);

}  // namespace vantorium::sandbox
