#pragma once

#include <optional>
#include <string>

#include "platform/foundation/clock.hpp"

namespace vantorium::drive {

/// "2026-01-31", its first moment in UTC, or "2026-01-31T12:00:00Z"; of the years 1970 to 2199. None for any
/// other text.
std::optional<Date> parseDate(const std::string& text);

/// "2026-01-31T12:00:00Z", with milliseconds ("…:00.200Z") when it has any.
std::string formatDate(Date date);

}  // namespace vantorium::drive
