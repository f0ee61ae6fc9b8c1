#pragma once

#include <optional>
#include <string>

#include <vantorium/error.hpp>

namespace vantorium {

/// None when `url` may be the address of a service: https, or http on this machine only; scheme, host and
/// perhaps a port, without a trailing slash. Else an error that says what is wrong.
std::optional<Error> checkServiceURL(const std::string& url);

}  // namespace vantorium
