#include "platform/foundation/date_format.hpp"

#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <memory>

namespace vantorium {

std::string formatDate(Date date, const std::string& pattern, const std::string& timezone,
                       const std::string& locale) {
  UErrorCode status = U_ZERO_ERROR;
  icu::SimpleDateFormat format(icu::UnicodeString::fromUTF8(pattern),
                               icu::Locale::createCanonical(locale.c_str()), status);
  if (U_FAILURE(status) != 0) return {};
  format.adoptTimeZone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(timezone)));
  const auto milliseconds = std::chrono::duration<double, std::milli>(date.time_since_epoch()).count();
  icu::UnicodeString text;
  format.format(milliseconds, text);
  std::string result;
  return text.toUTF8String(result);
}

}  // namespace vantorium
