#pragma once

#include <filesystem>

#include "hosts/headless/scripted.hpp"

namespace vantorium::headless {

/// Makes the folder that a host keeps things in, and its path one that holds whatever the current folder is.
/// Says what is wrong when it cannot be made or written to.
Refusal makeHome(std::filesystem::path& home);

}  // namespace vantorium::headless
