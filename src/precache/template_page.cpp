#include "precache/template_page.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <vector>

#include "precache/end_card_page.hpp"

namespace vantorium {

namespace {

constexpr std::string_view opening = "{{";
/// Openings to look at and, in units of 64, bytes to copy.
constexpr std::uint64_t mostWork = 400'000'000;

/// A page that knows where its "{{" are, so that a pass for one entry looks at those alone.
class TemplatePage {
 public:
  explicit TemplatePage(const std::string& text) { append(text, openingsIn(text)); }

  const std::string& text() const { return text_; }

  /// Replaces every `placeholder`, which begins with an opening; whether page and work stay within bounds.
  bool replaceAll(std::string_view placeholder, std::string_view value) {
    work_ += openings_.size();
    if (work_ > mostWork) return false;
    TemplatePage filled;
    filled.text_.reserve(text_.size() + value.size());
    std::size_t from = 0;
    for (const std::size_t at : openings_) {
      if (at < from || text_.compare(at, placeholder.size(), placeholder) != 0) continue;
      filled.appendPart(*this, from, at);
      filled.append(value, openingsIn(value));
      if (filled.text_.size() > largestPage) return false;
      from = at + placeholder.size();
    }
    if (from == 0) return true;  // no placeholder is empty
    filled.appendPart(*this, from, text_.size());
    filled.work_ = work_ + text_.size() / 64;
    *this = std::move(filled);
    return text_.size() <= largestPage;
  }

 private:
  TemplatePage() = default;

  static std::vector<std::size_t> openingsIn(std::string_view text) {
    std::vector<std::size_t> found;
    for (auto at = text.find(opening); at != std::string_view::npos; at = text.find(opening, at + 1))
      found.push_back(at);
    return found;
  }

  void append(std::string_view text, const std::vector<std::size_t>& openings) {
    joinWith(text);
    for (const std::size_t at : openings) openings_.push_back(text_.size() + at);
    text_ += text;
  }

  void appendPart(const TemplatePage& page, std::size_t from, std::size_t to) {
    const std::string_view part = std::string_view(page.text_).substr(from, to - from);
    joinWith(part);
    auto at = std::lower_bound(page.openings_.begin(), page.openings_.end(), from);
    for (; at != page.openings_.end() && *at + opening.size() <= to; ++at)
      openings_.push_back(text_.size() + *at - from);
    text_ += part;
  }

  /// Two parts may form an opening where they meet.
  void joinWith(std::string_view next) {
    if (text_.ends_with('{') && next.starts_with('{')) openings_.push_back(text_.size() - 1);
  }

  std::string text_;
  std::vector<std::size_t> openings_;
  std::uint64_t work_ = 0;
};

/// None for a kind of value that fills nothing.
std::optional<std::string> textOf(const nlohmann::json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_number_unsigned()) return std::to_string(value.get<std::uint64_t>());
  if (value.is_number_integer()) return std::to_string(value.get<std::int64_t>());
  if (!value.is_number_float()) return std::nullopt;
  const double number = value.get<double>();
  if (number == std::trunc(number)) return fmt::format("{:.0f}", number == 0 ? 0 : number);
  std::array<char, 400> digits{};  // the smallest double has some 340
  const auto end = std::to_chars(digits.begin(), digits.end(), number, std::chars_format::fixed).ptr;
  return std::string(digits.begin(), end);
}

}  // namespace

std::optional<std::string> filledTemplate(const std::string& page, const nlohmann::json& values) {
  if (page.size() > largestPage) return std::nullopt;
  TemplatePage filled(page);
  for (const auto& [key, value] : values.items()) {
    const auto text = textOf(value);
    if (text && !filled.replaceAll("{{" + key + "}}", *text)) return std::nullopt;
  }
  return filled.text();
}

}  // namespace vantorium
