#include "bindings/c/handle_table.hpp"

#include <algorithm>
#include <utility>

namespace vantorium::c {

namespace {

std::uintptr_t number(const void* handle) { return reinterpret_cast<std::uintptr_t>(handle); }

}  // namespace

HandleTable& HandleTable::shared() {
  // Never destroyed: threads that outlive main() may still give handles up.
  static auto* const table = new HandleTable;
  return *table;
}

void* HandleTable::add(Entry entry) {
  const MutexLock lock(mutex_);
  last_ += 2;
  const std::uintptr_t handle = last_ + 1;
  entries_.emplace(handle, Counted{std::move(entry)});
  return reinterpret_cast<void*>(handle);  // NOLINT(performance-no-int-to-ptr): never followed
}

HandleTable::Found HandleTable::findLocked(const void* handle, Kinds kinds) const {
  const auto found = entries_.find(number(handle));
  if (found == entries_.end()) return {.outcome = Outcome::noHandle};
  const Entry& entry = found->second.entry;
  if (std::find(kinds.begin(), kinds.end(), entry.kind) == kinds.end())
    return {.outcome = Outcome::otherKind, .kind = entry.kind};
  if (entry.user && *entry.user != std::this_thread::get_id())
    return {.outcome = Outcome::otherThread, .kind = entry.kind};
  return {.outcome = Outcome::found, .kind = entry.kind, .object = entry.object, .user = entry.user};
}

HandleTable::Found HandleTable::find(const void* handle, Kinds kinds) const {
  const MutexLock lock(mutex_);
  return findLocked(handle, kinds);
}

bool HandleTable::retain(const void* handle) {
  const MutexLock lock(mutex_);
  const auto found = entries_.find(number(handle));
  if (found == entries_.end()) return false;
  ++found->second.references;
  return true;
}

HandleTable::Outcome HandleTable::release(const void* handle) {
  std::shared_ptr<void> last;  // goes after the lock
  const MutexLock lock(mutex_);
  const auto found = entries_.find(number(handle));
  if (found == entries_.end()) return Outcome::noHandle;
  Counted& counted = found->second;
  if (counted.references > 1) {
    --counted.references;
    return Outcome::found;
  }
  if (counted.entry.owner && *counted.entry.owner != std::this_thread::get_id()) return Outcome::otherThread;
  last = std::move(counted.entry.object);
  entries_.erase(found);
  return Outcome::found;
}

HandleTable::Found HandleTable::take(const void* handle, Kinds kinds) {
  const MutexLock lock(mutex_);
  auto found = findLocked(handle, kinds);
  if (found.outcome == Outcome::found) entries_.erase(number(handle));  // `found` holds the object on
  return found;
}

}  // namespace vantorium::c
