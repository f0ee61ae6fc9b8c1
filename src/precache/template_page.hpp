#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace vantorium {

/// The page with each "{{key}}" replaced by the value of that key, one entry of `values` (an object) after
/// the other: text as it stands, whole numbers by their digits, others in the shortest decimal form that
/// reads back as the same number. Entries of other kinds leave their placeholders. None when the page is
/// larger than `largestPage` or would become
/// so, or when filling it takes unreasonably long: about two seconds.
std::optional<std::string> filledTemplate(const std::string& page, const nlohmann::json& values);

}  // namespace vantorium
