#pragma once

#include <string_view>

#include <vantorium/export.h>

namespace vantorium {

/// Writes a line to standard error, with a "\n" after it, and ignores what becomes of it: a full disk or a
/// closed pipe there is no reason to fail, and raises no signal. In one piece, so that lines of several
/// threads do not mix. Standard output belongs to the application. Any thread; throws nothing.
VANTORIUM_HOST_API void printToConsole(std::string_view line) noexcept;

}  // namespace vantorium
