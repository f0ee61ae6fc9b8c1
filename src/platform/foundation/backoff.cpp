#include "platform/foundation/backoff.hpp"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <random>
#include <utility>

namespace vantorium {

namespace {

std::minstd_rand::result_type seed() {
  try {
    return std::random_device()();
  } catch (const std::exception&) {
    // A system that has no descriptor left, say. No two processes start at the same nanosecond, each with
    // its stack at the same place.
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return static_cast<std::minstd_rand::result_type>(now ^ reinterpret_cast<std::intptr_t>(&now));
  }
}

}  // namespace

Backoff::Backoff(Seconds first, Seconds longest)
    : first_(std::min(first, longest)), longest_(longest), pause_(first_) {}

Seconds Backoff::next() { return withChance(std::exchange(pause_, std::min(pause_ * 2, longest_))); }

Seconds Backoff::withChance(Seconds pause) {
  thread_local std::minstd_rand chance(seed());
  return pause * std::uniform_real_distribution(0.8, 1.2)(chance);
}

}  // namespace vantorium
