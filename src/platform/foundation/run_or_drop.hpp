#pragma once

#include <exception>

#include <vantorium/export.h>

namespace vantorium {

/// Says on the console why a piece of work came to nothing. Any thread.
VANTORIUM_HOST_API void tellDropped(const char* why) noexcept;

/// Runs work for a caller that an exception must not reach (a thread's loop, a C library): what throws (out
/// of memory, most likely) is dropped, with a word on the console.
template <typename Work>
void runOrDrop(const Work& work) noexcept {
  try {
    work();
  } catch (const std::exception& problem) {
    tellDropped(problem.what());
  } catch (...) {
    tellDropped("something that is no std::exception was thrown");
  }
}

}  // namespace vantorium
