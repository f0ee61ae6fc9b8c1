#pragma once

#include <memory>
#include <utility>

#include "context/sdk_context.hpp"

namespace vantorium {

/// Sees to it that a flag that was set is cleared, whatever ends the work that it stands for, an exception
/// included. Any thread, one at a time.
class FlagMark {
 public:
  FlagMark(std::shared_ptr<SdkContext> context, bool SdkContext::Flags::*flag)
      : context_(std::move(context)), flag_(flag) {}
  FlagMark(const FlagMark&) = delete;
  FlagMark& operator=(const FlagMark&) = delete;
  ~FlagMark() { clear(); }

  /// Clears it now; only the first call of this or `release` does anything.
  void clear() {
    if (const auto context = std::exchange(context_, nullptr))
      context->updateFlags([this](SdkContext::Flags& flags) { flags.*flag_ = false; });
  }
  /// Somebody else sees to it from here on.
  void release() { context_ = nullptr; }

 private:
  std::shared_ptr<SdkContext> context_;
  bool SdkContext::Flags::*const flag_;
};

}  // namespace vantorium
