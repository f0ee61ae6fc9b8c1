#pragma once

#include <optional>
#include <string>

#include <vantorium/error.hpp>

namespace vantorium {

/// None when a file at `path` would lie inside the folder `basePath`, however the path is spelled. Else an
/// error that names `source`, where the path came from.
std::optional<Error> checkConfined(const std::string& path, const std::string& basePath,
                                   const std::string& source);

}  // namespace vantorium
