#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <variant>

namespace vantorium {

/// One value the application tells about its user. Literals convert to the alternative one expects: `true` to
/// bool, `30` to the integer, `0.5` to double, "m" to text.
using ParameterValue =
    std::variant<bool, std::int64_t, double, std::string, std::chrono::system_clock::time_point>;

/// What the application tells about its user when it configures the SDK, by key. Known keys are "userId"
/// (text), "age" (integer), "gender" (text) and "dateOfBirth" (time point); an entry of another type, or
/// under another key, is ignored.
using Parameters = std::map<std::string, ParameterValue>;

}  // namespace vantorium
