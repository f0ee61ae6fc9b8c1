#pragma once

#include <set>
#include <string>

#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

/// The placements that are being precached, whatever the kind of their ads: one request each at a time. Any
/// thread.
class PrecachingPlacements {
 public:
  enum class Beginning {
    underWay,  ///< it is being precached already
    ready,     ///< there is nothing to do
    begun,     ///< the placement is marked until `end`
  };

  /// One step: a placement with nothing to do never looks under way to others, however short. `isNeeded` is
  /// asked with the lock held, so it must not come back here.
  template <typename IsNeeded>
  Beginning begin(const std::string& placement, IsNeeded isNeeded) EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    if (placements_.contains(placement)) return Beginning::underWay;
    if (!isNeeded()) return Beginning::ready;
    placements_.insert(placement);
    return Beginning::begun;
  }

  void end(const std::string& placement) EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    placements_.erase(placement);
  }

 private:
  Mutex mutex_;
  std::set<std::string> placements_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
