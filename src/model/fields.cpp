#include "model/fields.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "model/json.hpp"

namespace vantorium::fields {

using nlohmann::json;
using Strings = std::vector<std::string>;

namespace {

bool isListOfStrings(const json& value) {
  return value.is_array() && std::ranges::all_of(value, [](const json& one) { return one.is_string(); });
}

}  // namespace

const json& valueOf(const json& object, const char* key) {
  static const json none;
  if (!object.is_object()) return none;
  const auto found = object.find(key);
  return found == object.end() ? none : *found;
}

std::string text(const json& object, const char* key) { return stringValue(object, key).value_or(""); }

Strings strings(const json& object, const char* key) {
  const json& value = valueOf(object, key);
  return isListOfStrings(value) ? value.get<Strings>() : Strings();
}

std::vector<Strings> listsOfStrings(const json& object, const char* key) {
  const json& value = valueOf(object, key);
  if (!value.is_array() || !std::ranges::all_of(value, isListOfStrings)) return {};
  return value.get<std::vector<Strings>>();
}

std::int64_t wholeNumber(const json& object, const char* key) {
  constexpr double limit = 9223372036854775808.0;  // the first that does not fit
  const json& value = valueOf(object, key);
  if (value.is_number_float()) {
    const double number = value.get<double>();
    const bool fits = number >= -limit && number < limit && std::trunc(number) == number;
    return fits ? static_cast<std::int64_t>(number) : 0;
  }
  if (value.is_number_unsigned()) {
    const auto number = value.get<std::uint64_t>();
    return number <= std::numeric_limits<std::int64_t>::max() ? static_cast<std::int64_t>(number) : 0;
  }
  return value.is_number_integer() ? value.get<std::int64_t>() : 0;
}

std::optional<double> number(const json& object, const char* key) {
  const json& value = valueOf(object, key);
  return value.is_number() ? std::optional(value.get<double>()) : std::nullopt;
}

}  // namespace vantorium::fields
