#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

/// Reads the fields of a record. A field that is missing or of another type counts as its default; `object`
/// may be any value.
namespace vantorium::fields {

/// The value under `key`, or null.
const nlohmann::json& valueOf(const nlohmann::json& object, const char* key);

std::string text(const nlohmann::json& object, const char* key);
/// A list of nothing but strings.
std::vector<std::string> strings(const nlohmann::json& object, const char* key);
std::vector<std::vector<std::string>> listsOfStrings(const nlohmann::json& object, const char* key);
/// A whole number that fits, however it is written ("12.0" too); else 0.
std::int64_t wholeNumber(const nlohmann::json& object, const char* key);
/// Any number.
std::optional<double> number(const nlohmann::json& object, const char* key);

}  // namespace vantorium::fields
