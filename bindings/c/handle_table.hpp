#pragma once

#include <cstdint>
#include <initializer_list>
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
  enum class Outcome { found, noHandle, otherKind, otherThread };
  struct Found {
    Outcome outcome;
    Kind kind{};                               ///< of what the handle stands for, if it is one
    std::shared_ptr<void> object = {};         ///< when found
    std::optional<std::thread::id> user = {};  ///< its one user
  };
  using Kinds = std::initializer_list<Kind>;

  /// A handle with one reference.
  void* add(Entry entry) EXCLUDES(mutex_);
  /// What the handle stands for, if that is of one of the kinds and of use on this thread. Who may not have
  /// it does not touch it: a reference taken for a moment could turn out to be the last.
  Found find(const void* handle, Kinds kinds) const EXCLUDES(mutex_);
  /// False when it is no handle.
  bool retain(const void* handle) EXCLUDES(mutex_);
  /// Gives a reference up.
  Outcome release(const void* handle) EXCLUDES(mutex_);
  /// Finds and ends the handle, whatever its references.
  Found take(const void* handle, Kinds kinds) EXCLUDES(mutex_);

 private:
  struct Counted {
    Entry entry;
    std::size_t references = 1;
  };
  Found findLocked(const void* handle, Kinds kinds) const REQUIRES(mutex_);

  mutable Mutex mutex_;
  std::uintptr_t last_ GUARDED_BY(mutex_) = 0;
  std::unordered_map<std::uintptr_t, Counted> entries_ GUARDED_BY(mutex_);
};

}  // namespace vantorium::c
