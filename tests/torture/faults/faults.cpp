#include "torture/faults/faults.hpp"

#include <execinfo.h>

#include <bit>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace vantorium::torture {

namespace {

Order* order = nullptr;
std::atomic<bool> isArmed{false};
std::array<std::atomic<Target>, 65536> targets{};
// Looked at by malloc: it must not need memory itself.
__attribute__((tls_model("initial-exec"))) thread_local int exemptions = 0;

/// Counts the operation; whether it is the one, or one after it while the fault stays.
bool isDue(Operation operation, const char* function) {
  if (!isArmed.load(std::memory_order_relaxed) || exemptions > 0) return false;
  ++order->counts[static_cast<std::size_t>(std::countr_zero(static_cast<std::uint32_t>(operation)))];
  if ((order->fault.operations & operation) == 0) return false;
  const std::uint64_t number = ++order->count;
  if (order->number == 0 || number < order->number) return false;
  if (number > order->number) return order->fault.stays;
  const Exempt exempt;  // a backtrace takes memory
  std::strncpy(order->operation.data(), function, order->operation.size() - 1);
  order->depth = backtrace(order->frames.data(), static_cast<int>(order->frames.size()));
  order->isReached = true;
  return true;
}

}  // namespace

void prepare(Order& one) { order = &one; }
void arm() { isArmed = true; }
void disarm() { isArmed = false; }

Exempt::Exempt() { ++exemptions; }
Exempt::~Exempt() { --exemptions; }

NotExempt::NotExempt() : before_(exemptions) { exemptions = 0; }
NotExempt::~NotExempt() { exemptions = before_; }

bool strikes(Operation operation, const char* function) {
  if (order == nullptr || order->fault.error == 0 || !isDue(operation, function)) return false;
  errno = order->fault.error;
  return true;
}

bool shortens(Operation operation, const char* function) {
  return order != nullptr && order->fault.error == 0 && isDue(operation, function);
}

bool isBelowHome(const char* path) {
  return order != nullptr && path != nullptr && order->home[0] != 0 &&
         std::string_view(path).starts_with(order->home.data());
}

bool isBelowHome(int folder, const char* path) {
  return isBelowHome(path) || (path != nullptr && path[0] != '/' && targetOf(folder) == Target::file);
}

Target targetOf(int descriptor) {
  const auto index = static_cast<std::size_t>(descriptor);
  return descriptor >= 0 && index < targets.size() ? targets[index].load() : Target::other;
}

int note(int descriptor, Target target) {
  const auto index = static_cast<std::size_t>(descriptor);
  if (descriptor >= 0 && index < targets.size()) targets[index] = target;
  return descriptor;
}

}  // namespace vantorium::torture
