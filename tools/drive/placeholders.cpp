#include "drive/placeholders.hpp"

#include <fmt/format.h>
#include <unicode/regex.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "platform/foundation/url.hpp"

namespace vantorium::drive {

namespace {

/// What the groups of the pattern stand for; `address` is what comes before a port and stays.
enum Group { identifierGroup = 1, timeGroup, addressGroup };

constexpr const char* pattern =
    // UUIDs, and other long runs of hexadecimal digits.
    "(\\b[0-9A-Fa-f]{8}(?:-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}\\b"
    "|\\b(?=[0-9a-f]*[0-9])[0-9a-f]{16,}\\b)"
    // Dates with a time, and times by themselves.
    "|(\\b\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d(?:\\.\\d+)?(?:Z|[+-]\\d\\d:\\d\\d)?"
    "|\\b\\d{1,2}:\\d\\d:\\d\\d(?:\\.\\d+)?\\b)"
    // Ports of addresses, which may be percent-encoded, even twice.
    "|((?://|%(?:25)*2F%(?:25)*2F)(?:[A-Za-z0-9.-]+|\\[[0-9A-Fa-f:]+\\])(?::|%(?:25)*3A))\\d{1,5}\\b";

void replaceAll(std::string& text, const std::string& what, const std::string& with) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
    text.replace(at, what.size(), with);
}

std::string groupOf(const icu::RegexMatcher& matcher, Group group, UErrorCode& status) {
  std::string text;
  matcher.group(group, status).toUTF8String(text);
  return text;
}

}  // namespace

struct Placeholders::Pattern {
  std::unique_ptr<icu::RegexPattern> compiled;
};

Placeholders::Placeholders(const std::filesystem::path& home) : pattern_(std::make_unique<Pattern>()) {
  UErrorCode status = U_ZERO_ERROR;
  UParseError where;
  pattern_->compiled.reset(icu::RegexPattern::compile(icu::UnicodeString::fromUTF8(pattern), where, status));
  if (U_FAILURE(status)) throw std::logic_error("the pattern of placeholders does not compile");
  const std::string url = fileURL(home.string());
  homes_ = {home.string(), url.substr(std::string("file://").size())};
  const auto byLength = [](const std::string& a, const std::string& b) { return a.size() > b.size(); };
  std::sort(homes_.begin(), homes_.end(), byLength);
}

Placeholders::~Placeholders() = default;

nlohmann::json Placeholders::replace(nlohmann::json value) {
  if (value.is_string()) return replaceText(value.get<std::string>());
  if (value.is_structured()) {
    for (auto& each : value) each = replace(std::move(each));
  }
  return value;
}

std::string Placeholders::replaceText(const std::string& original) {
  std::string text = original;
  for (const auto& home : homes_) replaceAll(text, home, "<home>");
  const icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(text);
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::RegexMatcher> matcher(pattern_->compiled->matcher(unicode, status));
  std::string result;
  int32_t done = 0;
  while (U_SUCCESS(status) && matcher->find(status)) {
    unicode.tempSubStringBetween(done, matcher->start(status)).toUTF8String(result);
    if (matcher->start(identifierGroup, status) >= 0) {
      result += identifier(groupOf(*matcher, identifierGroup, status));
    } else if (matcher->start(timeGroup, status) >= 0) {
      result += "<time>";
    } else {
      result += groupOf(*matcher, addressGroup, status) + "<port>";
    }
    done = matcher->end(status);
  }
  unicode.tempSubStringBetween(done).toUTF8String(result);
  return result;
}

const std::string& Placeholders::identifier(const std::string& text) {
  const auto [found, isNew] = identifiers_.try_emplace(text);
  if (isNew) found->second = fmt::format("<id-{}>", identifiers_.size());
  return found->second;
}

}  // namespace vantorium::drive
