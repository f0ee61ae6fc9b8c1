#pragma once

#include <optional>
#include <string>

#include "sandbox/service/answer.hpp"

namespace vantorium::sandbox {

/// A file under "/made/", made of its own path: always the same bytes, and others for another path, so that
/// whoever finds them on disk knows which file they were. Text and film begin with `madeMark` and the path;
/// a picture and an archive that can be opened have them within. Nullopt for other paths.
std::optional<Answer> madeFile(const std::string& path);

/// What stands before the path in a made file, with a line feed after the path.
inline constexpr const char* madeMark = "made of ";

}  // namespace vantorium::sandbox
