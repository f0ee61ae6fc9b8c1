#pragma once

#include <cstdint>
#include <random>

namespace vantorium::soak {

/// The chance of one round: a round makes the same choices whatever was chosen before it.
class Dice {
 public:
  Dice(std::uint64_t seed, int round)
      : random_(seed * 0x9E3779B97F4A7C15U + static_cast<std::uint64_t>(round)) {
    random_.discard(1);
  }

  bool chance(double probability) { return std::uniform_real_distribution<>()(random_) < probability; }
  /// 0 to one less than `count`.
  std::size_t below(std::size_t count) {
    return std::uniform_int_distribution<std::size_t>(0, count - 1)(random_);
  }
  double between(double least, double most) { return std::uniform_real_distribution<>(least, most)(random_); }
  template <typename List>
  const auto& pick(const List& list) {
    return list[below(list.size())];
  }

 private:
  std::mt19937_64 random_;
};

}  // namespace vantorium::soak
