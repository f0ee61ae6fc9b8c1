#pragma once

#include "platform/foundation/clock.hpp"

namespace vantorium::gtk {

/// Real time; timers are sources of the default main context.
class MainLoopClock final : public Clock {
 public:
  Date now() const override { return std::chrono::system_clock::now(); }
  std::unique_ptr<Timer> schedule(Seconds interval, bool repeats, std::function<void()> handler) override;
};

}  // namespace vantorium::gtk
