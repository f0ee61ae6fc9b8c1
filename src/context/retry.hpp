#pragma once

#include <functional>
#include <memory>

#include "context/sdk_context.hpp"
#include "platform/foundation/clock.hpp"

namespace vantorium {

/// Does a thing again later: on the main queue, after a pause that grows from one time to the next, or at
/// once when the device comes online. At most one piece of work is pending, and it runs once at most; what is
/// pending when the SDK ends is dropped, and nothing is taken from then on.
///
/// Any thread. A drop on the main thread is at once; on another one, work whose time has just come may still
/// run. What is dropped is destroyed, without a lock, on the thread that drops it. Work may own the `Retry`.
class Retry {
 public:
  /// The pauses are those of `Backoff`.
  Retry(std::shared_ptr<SdkContext> context, Seconds first, Seconds longest);
  /// Drops what is pending.
  ~Retry();
  Retry(const Retry&) = delete;
  Retry& operator=(const Retry&) = delete;

  /// Has `work` run after the next pause, in place of what is pending.
  void schedule(std::function<void()> work);
  /// The same after `pause` (see `Backoff::withChance`); the pauses do not grow by it.
  void schedule(Seconds pause, std::function<void()> work);
  /// Drops what is pending.
  void cancel();
  /// Drops what is pending; the next pause is the first one again.
  void reset();
  bool isPending() const;

 private:
  struct State;

  const std::shared_ptr<SdkContext> context_;
  const std::shared_ptr<State> state_;
};

}  // namespace vantorium
