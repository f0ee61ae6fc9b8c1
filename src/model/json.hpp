#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include <vantorium/error.hpp>

namespace vantorium {

/// What a JSON text may hold before it is refused; both keep a hostile text from exhausting stack or memory.
inline constexpr int maxJSONDepth = 128;
inline constexpr std::size_t maxJSONBytes = std::size_t{4} << 20U;

/// The parsed text, or none with `error` set to a "json" error that says where and why. Never throws.
std::optional<nlohmann::json> parseJSON(std::string_view text, std::optional<Error>& error);

/// The value as indented text. Strings that are not UTF-8 are repaired rather than refused.
std::string prettyPrinted(const nlohmann::json& value);

/// The string under `key`; none when `object` is no object, lacks the key or holds another type there.
std::optional<std::string> stringValue(const nlohmann::json& object, std::string_view key);

}  // namespace vantorium
