#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

/// What is to be called when something happens, each function as long as whoever gave it keeps its token. Any
/// thread; no lock is held while calling.
class Observers {
 public:
  /// Dropping the token ends it: dropped on the thread that calls, the handler does not run after that. It
  /// may be dropped inside a handler, and on any thread (a handler already under way then still ends).
  [[nodiscard]] std::shared_ptr<void> add(std::function<void()> handler) EXCLUDES(mutex_) {
    auto added = std::make_shared<Handler>(std::move(handler));
    const MutexLock lock(mutex_);
    std::erase_if(handlers_, [](const auto& each) { return each.expired(); });
    handlers_.push_back(added);
    return added;
  }

  /// Runs all handlers, on this thread, in the order they were added. One that is added meanwhile waits for
  /// the next call.
  void call() EXCLUDES(mutex_) {
    std::vector<std::weak_ptr<Handler>> handlers;
    {
      const MutexLock lock(mutex_);
      handlers = handlers_;
    }
    for (const auto& each : handlers) {
      if (const auto handler = each.lock()) (*handler)();
    }
  }

 private:
  using Handler = std::function<void()>;

  Mutex mutex_;
  std::vector<std::weak_ptr<Handler>> handlers_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
