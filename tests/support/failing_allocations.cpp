#include "support/failing_allocations.hpp"

#include <cstdlib>
#include <new>

namespace {

constexpr int unlimited = -1;
thread_local int successesLeft = unlimited;

}  // namespace

namespace vantorium::testing {

FailingAllocations::FailingAllocations(int successes) {
  if (isSupported) successesLeft = successes;
}

FailingAllocations::~FailingAllocations() { successesLeft = unlimited; }

}  // namespace vantorium::testing

#if !defined(__has_feature)
#define __has_feature(x) 0
#endif
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && !__has_feature(address_sanitizer) && \
    !__has_feature(thread_sanitizer)

void* operator new(std::size_t size) {
  if (successesLeft == 0) throw std::bad_alloc();
  if (successesLeft > 0) --successesLeft;
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

#endif
