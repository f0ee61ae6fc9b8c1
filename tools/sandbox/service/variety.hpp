#pragma once

#include <cstdint>
#include <mutex>
#include <nlohmann/json.hpp>
#include <random>

namespace vantorium::sandbox {

/// Makes the records of a catalogue differ from one handing out to the next: "anyOf" is decided, and the
/// placeholders "{{count}}" and "{{some}}" are filled in, as README.md describes. Callable on any thread.
class Variety {
 public:
  /// The same seed brings the same choices, in the order in which records are handed out.
  explicit Variety(std::uint64_t seed) : random_(seed) {}

  void vary(nlohmann::json& record);
  /// How many records have been handed out: the "{{count}}" of the latest.
  std::uint64_t count() const;

 private:
  mutable std::mutex mutex_;  // guards both
  std::mt19937_64 random_;
  std::uint64_t count_ = 0;
};

}  // namespace vantorium::sandbox
