#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include <vantorium/export.h>

namespace vantorium {

using Date = std::chrono::system_clock::time_point;
using Seconds = std::chrono::duration<double>;

/// A pending timer. Dropping it cancels it: dropped on the main thread, its handler does not run after that.
/// It may be dropped inside its own handler, and on any thread (a handler already under way then still ends).
class VANTORIUM_HOST_API Timer {
 public:
  virtual ~Timer() = default;
};

/// Time, as the host has it: real, or virtual in tests. May be used on any thread.
class VANTORIUM_HOST_API Clock {
 public:
  virtual ~Clock() = default;

  /// The wall clock.
  virtual Date now() const = 0;

  /// Calls `handler` on the main queue `interval` from now, once or, if `repeats`, again after each interval.
  /// The timer lives as long as the returned handle.
  virtual std::unique_ptr<Timer> schedule(Seconds interval, bool repeats, std::function<void()> handler) = 0;
};

}  // namespace vantorium
