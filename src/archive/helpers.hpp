#pragma once

#include <functional>
#include <memory>

namespace vantorium {

/// Workers that lend a hand with work whose own thread, which may be a worker itself, gets it done alone when
/// none of them is free. Used by that thread.
class Helpers {
 public:
  /// At most that many at a time call `help`, each on a worker, at any time in the life of this object.
  Helpers(unsigned most, std::function<void()> help);
  /// Waits for those who are at it. Who was asked and has not come yet never will.
  ~Helpers();
  Helpers(const Helpers&) = delete;
  Helpers& operator=(const Helpers&) = delete;

  /// Asks for one more, if not as many were asked already who have not left.
  void invite();

 private:
  struct State;
  static void lendHand(State& state);

  std::shared_ptr<State> state_;
};

}  // namespace vantorium
