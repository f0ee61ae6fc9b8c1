#include "drive/dates.hpp"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <cstdio>

namespace vantorium::drive {

namespace {

using namespace std::chrono;

/// The text as a date by one pattern; written back it must be the same text, for scanf is generous.
std::optional<Date> parseWith(const char* pattern, bool hasTime, const std::string& text) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  if (std::sscanf(text.c_str(), pattern, &year, &month, &day, &hour, &minute, &second) != (hasTime ? 6 : 3))
    return std::nullopt;
  const year_month_day calendar{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                std::chrono::day(static_cast<unsigned>(day))};
  if (!calendar.ok() || year < 1970 || year > 2199) return std::nullopt;
  const Date date = sys_days(calendar) + hours(hour) + minutes(minute) + seconds(second);
  const std::string again = formatDate(date);
  return text == (hasTime ? again : again.substr(0, 10)) ? std::optional(date) : std::nullopt;
}

}  // namespace

std::optional<Date> parseDate(const std::string& text) {
  return text.size() == 10 ? parseWith("%4d-%2d-%2d", false, text)
                           : parseWith("%4d-%2d-%2dT%2d:%2d:%2dZ", true, text);
}

std::string formatDate(Date date) {
  const auto whole = floor<milliseconds>(date);
  const auto part = (whole - floor<seconds>(whole)).count();
  const std::string start =
      fmt::format("{:%FT%T}", fmt::gmtime(system_clock::to_time_t(floor<seconds>(date))));
  return part == 0 ? start + "Z" : fmt::format("{}.{:03}Z", start, part);
}

}  // namespace vantorium::drive
