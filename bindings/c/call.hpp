#pragma once

#include <exception>

#include "bindings/c/handles.hpp"

namespace vantorium::c {

/// Makes it the last error of this thread; forgets the one before when there is no memory for it.
VANTORIUM_HOST_API void note(const Error& error) noexcept;
VANTORIUM_HOST_API void note(const char* what) noexcept;

/// Runs the body of a function of the C API and returns what it returns; or, when it refuses or anything else
/// is thrown, notes that and returns `failure`. The one door for every function that could throw.
template <typename Result, typename Body>
Result call(Result failure, Body body) noexcept {
  try {
    return body();
  } catch (const Refusal& refusal) {
    note(refusal.error);
  } catch (const std::exception& exception) {
    note(exception.what());
  } catch (...) {
    note("A callback has thrown. Callbacks of the C API must not.");
  }
  return failure;
}

/// Likewise of one that says whether it worked, and does unless it is refused.
template <typename Body>
bool perform(Body body) noexcept {
  return call(false, [&] {
    body();
    return true;
  });
}

/// For functions that answer with an error rather than throw.
inline void refuseIf(const std::optional<Error>& error) {
  if (error) throw Refusal{*error};
}

}  // namespace vantorium::c
