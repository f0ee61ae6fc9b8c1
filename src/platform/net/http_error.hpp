#pragma once

#include <string>
#include <string_view>

#include <vantorium/error.hpp>

#include "platform/net/http_session.hpp"

namespace vantorium {

/// The failure of one exchange as an `Error` of domain "curl". `url` is where it failed, which a redirect may
/// have changed; `detail` is what libcurl says about it, empty for nothing. A failure for want of descriptors
/// or memory is told as such, with the domain "posix". Any thread, as all below.
Error httpError(int curlCode, std::string_view url, const HTTPLimits& limits, std::string_view detail = {});

/// The end of an exchange that was slower than `slowBytesPerSecond`.
Error tooSlow(std::string_view url, const HTTPLimits& limits);
/// The end of an exchange that was older than `longest`.
Error tookTooLong(std::string_view url, const HTTPLimits& limits);

/// The failure to begin, for want of something that the machine has: `code` is an errno.
Error noNetwork(int code);
/// Takes no memory itself.
Error outOfMemory();

}  // namespace vantorium
