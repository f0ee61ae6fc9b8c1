#pragma once

#include <memory>
#include <utility>

#include "context/sdk_context.hpp"

namespace vantorium {

/// Sees to it that flags that were set are cleared, whatever ends the work that they stand for, an exception
/// included. It is made before they are set, and takes charge of them then. Any thread, one at a time.
class FlagMark {
 public:
  using Clear = void (*)(SdkContext::Flags& flags);

  FlagMark(std::shared_ptr<SdkContext> context, Clear how) : context_(std::move(context)), clear_(how) {}
  FlagMark(const FlagMark&) = delete;
  FlagMark& operator=(const FlagMark&) = delete;
  ~FlagMark() { clear(); }

  /// The flags have just been set.
  void takeCharge() noexcept { isInCharge_ = true; }
  /// Clears them now; only the first call does anything.
  void clear() {
    if (std::exchange(isInCharge_, false)) context_->updateFlags(clear_);
  }

 private:
  const std::shared_ptr<SdkContext> context_;
  const Clear clear_;
  bool isInCharge_ = false;
};

}  // namespace vantorium
