#pragma once

#include <memory>
#include <set>
#include <string>

#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

/// The placements that are being precached, whatever the kind of their ads: one request each at a time. Any
/// thread.
class PrecachingPlacements : public std::enable_shared_from_this<PrecachingPlacements> {
 public:
  /// The placement is marked as long as somebody holds this.
  using Mark = std::shared_ptr<void>;
  struct Beginning {
    bool isUnderWay = false;  ///< it is being precached already
    Mark mark;                ///< null when it is under way, or when there is nothing to do
  };

  /// One step: a placement with nothing to do never looks under way to others, however short. `isNeeded` is
  /// asked with the lock held, so it must not come back here.
  template <typename IsNeeded>
  Beginning begin(const std::string& placement, IsNeeded isNeeded) EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    if (placements_.contains(placement)) return {.isUnderWay = true, .mark = nullptr};
    if (!isNeeded()) return {};
    Mark mark(static_cast<void*>(this),
              [self = shared_from_this(), placement](void*) { self->end(placement); });
    placements_.insert(placement);
    return {.isUnderWay = false, .mark = std::move(mark)};
  }

 private:
  void end(const std::string& placement) EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    placements_.erase(placement);
  }

  Mutex mutex_;
  std::set<std::string> placements_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
