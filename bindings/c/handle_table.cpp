#include "bindings/c/handle_table.hpp"

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

std::optional<HandleTable::Entry> HandleTable::find(const void* handle) const {
  const MutexLock lock(mutex_);
  const auto found = entries_.find(number(handle));
  if (found == entries_.end()) return std::nullopt;
  return found->second.entry;
}

bool HandleTable::retain(const void* handle) {
  const MutexLock lock(mutex_);
  const auto found = entries_.find(number(handle));
  if (found == entries_.end()) return false;
  ++found->second.references;
  return true;
}

HandleTable::Release HandleTable::release(const void* handle) {
  std::shared_ptr<void> last;  // goes after the lock
  const MutexLock lock(mutex_);
  const auto found = entries_.find(number(handle));
  if (found == entries_.end()) return Release::noHandle;
  Counted& counted = found->second;
  if (counted.references == 1) {
    if (counted.entry.owner && *counted.entry.owner != std::this_thread::get_id())
      return Release::wrongThread;
    last = std::move(counted.entry.object);
    entries_.erase(found);
  } else {
    --counted.references;
  }
  return Release::done;
}

std::optional<HandleTable::Entry> HandleTable::take(const void* handle, Kind kind) {
  const MutexLock lock(mutex_);
  const auto found = entries_.find(number(handle));
  if (found == entries_.end() || found->second.entry.kind != kind) return std::nullopt;
  Entry entry = std::move(found->second.entry);
  entries_.erase(found);
  return entry;
}

std::size_t HandleTable::size() const {
  const MutexLock lock(mutex_);
  return entries_.size();
}

}  // namespace vantorium::c
