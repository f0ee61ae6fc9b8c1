#include "model/json.hpp"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

namespace vantorium {

namespace {

using nlohmann::json;

constexpr std::size_t longestExplanation = 512;

Error refusal(int code, std::string text) {
  if (text.size() > longestExplanation) text.resize(longestExplanation);
  return Error::platform("json", code, std::move(text));
}

/// What the parser says, without the name of its exception.
std::string withoutPrefix(const std::string& text) {
  const std::size_t end = text.find("] ");
  return end == std::string::npos ? text : text.substr(end + 2);
}

}  // namespace

std::optional<json> parseJSON(std::string_view text, std::optional<Error>& error) {
  if (text.size() > maxJSONBytes) {
    error = refusal(1, fmt::format("The JSON text is longer than {} bytes.", maxJSONBytes));
    return std::nullopt;
  }
  // The parser would take a NUL for the end of the text, whatever follows.
  if (text.find('\0') != std::string_view::npos) {
    error = refusal(101, "The text is not JSON: it has a NUL byte in it.");
    return std::nullopt;
  }
  bool tooDeep = false;
  // The parser itself keeps no stack; it is the value it builds that must not become deep.
  const auto isShallow = [&tooDeep](int depth, json::parse_event_t event, const json&) {
    const bool opens =
        event == json::parse_event_t::array_start || event == json::parse_event_t::object_start;
    tooDeep = tooDeep || (opens && depth >= maxJSONDepth);
    return !tooDeep;
  };
  try {
    json value = json::parse(text.begin(), text.end(), isShallow);
    if (!tooDeep) return value;
    error = refusal(2, fmt::format("The JSON text is nested deeper than {} levels.", maxJSONDepth));
  } catch (const json::exception& exception) {
    error = refusal(exception.id, "The text is not JSON: " + withoutPrefix(exception.what()));
  }
  return std::nullopt;
}

std::string prettyPrinted(const json& value) {
  return value.dump(2, ' ', false, json::error_handler_t::replace);
}

std::optional<std::string> stringValue(const json& object, std::string_view key) {
  if (!object.is_object()) return std::nullopt;
  const auto found = object.find(key);
  if (found == object.end() || !found->is_string()) return std::nullopt;
  return found->get<std::string>();
}

}  // namespace vantorium
