#pragma once

#include <string>

#include "platform/foundation/clock.hpp"

namespace vantorium {

/// The date as text, by a Unicode date pattern such as "H:mm:ss.SSSS". An unknown time zone counts as GMT, an
/// unknown locale as the root locale. Any thread.
std::string formatDate(Date date, const std::string& pattern, const std::string& timezone,
                       const std::string& locale);

}  // namespace vantorium
