#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "sandbox/http/listener.hpp"

namespace vantorium::sandbox {

/// Times in which nobody can connect. Callable on any thread but the listener's own, which an outage ends.
class Outage {
 public:
  /// `listener` outlives this.
  explicit Outage(Listener& listener) : listener_(listener) {}
  ~Outage() { end(); }
  Outage(const Outage&) = delete;
  Outage& operator=(const Outage&) = delete;

  /// Returns at once; does nothing during an outage and after `end`.
  void begin(std::chrono::milliseconds length);
  /// Ends one that is under way, and allows no other.
  void end();

 private:
  void sitOut(std::chrono::milliseconds length);

  Listener& listener_;
  std::mutex mutex_;  // guards everything below
  std::condition_variable changed_;
  bool isUnderWay_ = false;
  bool hasEnded_ = false;
  std::thread thread_;
};

}  // namespace vantorium::sandbox
