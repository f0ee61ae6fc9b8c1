#pragma once

#include <string_view>

#include <vantorium/error.hpp>

#include "platform/net/http_session.hpp"

namespace vantorium {

/// The failure of one exchange as an `Error` of domain "curl". `url` is where it failed, which a redirect may
/// have changed; `detail` is what libcurl says about it, empty for nothing. Any thread.
Error httpError(int curlCode, std::string_view url, const HTTPLimits& limits, std::string_view detail = {});

}  // namespace vantorium
