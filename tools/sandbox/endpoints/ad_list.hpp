#pragma once

#include <string>

#include "sandbox/endpoints/endpoint.hpp"

namespace vantorium::sandbox {

/// Cuts the ads of a placement to as many as the call asks for, and gives each its impression: a fresh one,
/// unless the catalogue names one.
void handOut(const Service& service, const Call& call, const std::string& placement,
             nlohmann::json::array_t& ads);

}  // namespace vantorium::sandbox
