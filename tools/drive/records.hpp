#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include <vantorium/error.hpp>
#include <vantorium/native_ad.hpp>
#include <vantorium/options.hpp>
#include <vantorium/parameters.hpp>

#include "drive/command.hpp"

namespace vantorium::drive {

/// Null, or {"domain", "code", "text"}.
nlohmann::json toJSON(const std::optional<Error>& error);
/// The record under its property names.
nlohmann::json toJSON(const VantoriumNativeAd& ad);
/// What the options hold, by property; an empty object for options that are none of the known ones.
nlohmann::json toJSON(const VantoriumAdOptions& options);

/// Options of the kind that the properties belong to. Throws `Refusal`, as the next two do.
std::shared_ptr<VantoriumAdOptions> readOptions(const nlohmann::json& value);
/// The "serverParameter" of a command; none when it is missing or null.
std::optional<VantoriumServerParameter> readServerParameter(const Command& command);
/// The "parameters" of a command; none when they are missing or null.
std::optional<Parameters> readParameters(const Command& command);

}  // namespace vantorium::drive
