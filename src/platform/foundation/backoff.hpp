#pragma once

#include "platform/foundation/clock.hpp"

namespace vantorium {

/// How long to wait before the next try of something that failed: longer and longer up to a limit, and never
/// as long as the neighbour, so that a million installations that failed at one moment do not come back at
/// one moment. Nothing is thrown. One thread at a time.
class Backoff {
 public:
  /// The pause before the first try that follows, and the longest there will be.
  Backoff(Seconds first, Seconds longest);

  /// The pause before the next try: `first`, then twice as long each time up to `longest`, with chance.
  Seconds next();
  /// A try succeeded: the next pause is the first one again.
  void reset() { pause_ = first_; }

  /// `pause`, up to a fifth longer or shorter, all lengths as likely. Any thread.
  static Seconds withChance(Seconds pause);

 private:
  const Seconds first_, longest_;
  Seconds pause_;
};

}  // namespace vantorium
