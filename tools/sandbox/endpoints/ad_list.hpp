#pragma once

#include <string>

#include "sandbox/endpoints/endpoint.hpp"

namespace vantorium::sandbox {

/// Makes a record of the catalogue one that is handed out: decides what the catalogue leaves open, and gives
/// it its impression: a fresh one, unless the catalogue names one.
void handOut(const Service& service, const std::string& placement, nlohmann::json& ad);

/// Cuts the ads of a placement to as many as the call asks for, and hands each out.
void handOut(const Service& service, const Call& call, const std::string& placement,
             nlohmann::json::array_t& ads);

}  // namespace vantorium::sandbox
