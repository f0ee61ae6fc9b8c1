#include "platform/foundation/date_format.hpp"

#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <array>
#include <memory>
#include <utility>

#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

namespace {

std::unique_ptr<icu::SimpleDateFormat> makeFormat(const std::string& pattern, const std::string& timezone,
                                                  const std::string& locale) {
  UErrorCode status = U_ZERO_ERROR;
  auto format = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString::fromUTF8(pattern),
                                                        icu::Locale::createCanonical(locale.c_str()), status);
  if (U_FAILURE(status) != 0) return nullptr;
  format->adoptTimeZone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(timezone)));
  return format;
}

/// Making a format costs a hundred times as much as using it, and ICU does not survive a lack of memory
/// there.
class LastFormat {
 public:
  /// Empty when ICU does not know what to make of it.
  std::string text(double milliseconds, const std::string& pattern, const std::string& timezone,
                   const std::string& locale) EXCLUDES(mutex_) {
    std::array<std::string, 3> key{pattern, timezone, locale};
    const MutexLock lock(mutex_);
    if (key_ != key) {
      format_ = makeFormat(pattern, timezone, locale);
      key_ = std::move(key);
    }
    if (!format_) return {};
    icu::UnicodeString text;
    format_->format(milliseconds, text);
    std::string result;
    return text.toUTF8String(result);
  }

 private:
  Mutex mutex_;
  std::array<std::string, 3> key_ GUARDED_BY(mutex_);  ///< pattern, time zone, locale
  std::unique_ptr<icu::SimpleDateFormat> format_ GUARDED_BY(mutex_);
};

}  // namespace

std::string formatDate(Date date, const std::string& pattern, const std::string& timezone,
                       const std::string& locale) {
  // Never deleted: a worker may write to the log while the process ends.
  static auto* const last = new LastFormat;
  const auto milliseconds = std::chrono::duration<double, std::milli>(date.time_since_epoch()).count();
  return last->text(milliseconds, pattern, timezone, locale);
}

}  // namespace vantorium
