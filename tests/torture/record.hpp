#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include "torture/faults/faults.hpp"

namespace vantorium::torture {

/// Text in shared memory; what does not fit is cut off.
template <std::size_t size>
class SharedText {
 public:
  void add(std::string_view text) {
    const std::size_t count = std::min(text.size(), size - used_);
    std::memcpy(bytes_.data() + used_, text.data(), count);
    used_ += count;
  }
  std::string text() const { return {bytes_.data(), used_}; }

 private:
  std::size_t used_ = 0;
  std::array<char, size> bytes_{};
};

/// What one run tells, in memory that outlives its process.
struct Record {
  Order order;
  std::array<char, 64> step{};     ///< what it was about when it ended or hung
  bool hasSucceeded = false;       ///< the work did, in spite of the fault
  bool hasEnded = false;           ///< it went through to its end
  SharedText<8192> problems;       ///< a line each
  SharedText<65536> inventory;     ///< of the files that it met, a line each
  int signal = 0;                  ///< that ended it
  std::array<void*, 48> frames{};  ///< where that signal came, innermost first
  int depth = 0;
};

}  // namespace vantorium::torture
