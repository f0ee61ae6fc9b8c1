#pragma once

namespace vantorium::testing {

/// While it lives, `operator new` fails on this thread once so many more have succeeded. Where a sanitizer
/// brings an operator of its own nothing fails.
class FailingAllocations {
 public:
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  static constexpr bool isSupported = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
  static constexpr bool isSupported = false;
#else
  static constexpr bool isSupported = true;
#endif
#else
  static constexpr bool isSupported = true;
#endif

  explicit FailingAllocations(int successes);
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;
};

}  // namespace vantorium::testing
