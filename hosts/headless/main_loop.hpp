#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include <vantorium/dispatch_queue.hpp>

#include "platform/foundation/clock.hpp"

namespace vantorium::headless {

enum class ClockKind {
  virtualTime,  ///< stands still until `advance`
  realTime
};

/// The main queue and the clock of a process without a toolkit: the thread that runs the loop is the main
/// thread.
///
/// Work may be handed over on any thread; `run…` and `advance` belong to the main thread. Nothing wakes up
/// while nothing is due.
class MainLoop : public DispatchQueue, public Clock, public std::enable_shared_from_this<MainLoop> {
 public:
  explicit MainLoop(ClockKind kind);

  void async(std::function<void()> work) override;
  Date now() const override;
  std::unique_ptr<Timer> schedule(Seconds interval, bool repeats, std::function<void()> handler) override;

  /// Has a running `runUntil` ask again. Any thread.
  void wake();
  /// Called with each piece of work that another thread hands over, on that thread; what it returns is run in
  /// its place. Set it before the loop is used.
  using Decorator = std::function<std::function<void()>(std::function<void()> work)>;
  void setDecorator(Decorator decorator) { decorator_ = std::move(decorator); }

  /// Runs what is due now, and what that causes, until nothing is left.
  void runPending();
  /// Runs the loop until `done` answers true, asked after each piece of work; false if `timeout` of real time
  /// passed first.
  bool runUntil(const std::function<bool()>& done, Seconds timeout = Seconds{30});
  /// Virtual time only: moves the clock on by `interval`, running every timer on the way, in order, each with
  /// all that it causes on this queue.
  void advance(Seconds interval);
  /// How many timers wait for their time.
  std::size_t pendingTimers() const;
  /// Virtual time only: sets the wall clock without running timers.
  void setNow(Date now);

 private:
  /// Time since the loop was made, by which timers are ordered; whole, so that steps add up.
  using Instant = std::chrono::nanoseconds;
  struct Entry;
  class Handle;

  Instant instantLocked() const;
  /// The next piece of work that is due, or none.
  std::function<void()> takeDueLocked();
  std::function<void()> takeTimerLocked(Instant until);

  const ClockKind kind_;
  const std::thread::id mainThread_ = std::this_thread::get_id();
  Decorator decorator_;
  const std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> queue_;
  bool isWoken_ = false;
  std::multimap<Instant, std::shared_ptr<Entry>> timers_;
  Instant virtualInstant_{0};
  Date virtualNow_;
};

}  // namespace vantorium::headless
