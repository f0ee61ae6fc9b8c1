#pragma once

#include <functional>
#include <map>

#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

/// libcurl's life in this process, and the sessions on top of it: those still there when the process exits
/// are shut down before the TLS library under them cleans up. Any thread.
class HTTPLibrary {
 public:
  /// Initialises libcurl the first time.
  static HTTPLibrary& shared();

  /// `shutdown` may be called until `remove`, which waits while it runs.
  void add(const void* session, std::function<void()> shutdown) EXCLUDES(mutex_);
  void remove(const void* session) EXCLUDES(mutex_);

 private:
  HTTPLibrary() = default;
  void shutdownAll() EXCLUDES(mutex_);

  Mutex mutex_;
  std::map<const void*, std::function<void()>> sessions_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
