#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <thread>
#include <unordered_map>

#include <vantorium/export.h>

#include "platform/foundation/thread_annotations.hpp"

namespace vantorium::c {

/// What a handle may stand for.
enum class Kind {
  error,
  queue,
  work,
  host,
  delegate,
  parameters,
  nativeAdOptions,
  mediaViewOptions,
  serverParameter,
  nativeAd,
  nativeAdAsset,
  nativeAdView,
};

/// Every object that the application holds through the C API, by handle. Handles are odd numbers that count
/// up and never come again, so whatever else is given as one, a pointer or a handle of yesterday, is not
/// found.
///
/// Any thread. Objects are let go of without the lock held.
class VANTORIUM_HOST_API HandleTable {
 public:
  static HandleTable& shared();

  struct Entry {
    Kind kind{};
    std::shared_ptr<void> object;
    /// The one thread that may use the object; any when none.
    std::optional<std::thread::id> user = {};
    /// The one thread that may give the last reference up; any when none.
    std::optional<std::thread::id> owner = {};
  };

  /// A handle with one reference.
  void* add(Entry entry) EXCLUDES(mutex_);
  /// What the handle stands for; none when it is no handle.
  std::optional<Entry> find(const void* handle) const EXCLUDES(mutex_);
  /// False when it is no handle.
  bool retain(const void* handle) EXCLUDES(mutex_);
  enum class Release { done, noHandle, wrongThread };
  Release release(const void* handle) EXCLUDES(mutex_);
  /// Ends the handle whatever its references and gives what it stood for; none when it is no handle of the
  /// kind.
  std::optional<Entry> take(const void* handle, Kind kind) EXCLUDES(mutex_);
  /// How many handles there are.
  std::size_t size() const EXCLUDES(mutex_);

 private:
  struct Counted {
    Entry entry;
    std::size_t references = 1;
  };
  mutable Mutex mutex_;
  std::uintptr_t last_ GUARDED_BY(mutex_) = 0;
  std::unordered_map<std::uintptr_t, Counted> entries_ GUARDED_BY(mutex_);
};

}  // namespace vantorium::c
