#pragma once

#include <memory>
#include <set>
#include <string>
#include <utility>

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

  /// `isNeeded` is asked once before the placement is marked, so that one with nothing to do never looks
  /// under way to others, and once after, for another precaching may have ended between.
  template <typename IsNeeded>
  Beginning begin(const std::string& placement, IsNeeded isNeeded) EXCLUDES(mutex_) {
    const Beginning underWay{.isUnderWay = true, .mark = nullptr};
    if (isUnderWay(placement)) return underWay;
    if (!isNeeded()) return {};
    const auto holder = std::make_shared<Holder>(shared_from_this(), placement);
    if (!insert(placement)) return underWay;
    holder->isHolding = true;
    if (!isNeeded()) return {};
    return {.isUnderWay = false, .mark = holder};
  }

 private:
  struct Holder {
    Holder(std::shared_ptr<PrecachingPlacements> of, std::string what)
        : owner(std::move(of)), placement(std::move(what)) {}
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() {
      if (isHolding) owner->end(placement);
    }

    const std::shared_ptr<PrecachingPlacements> owner;
    const std::string placement;
    bool isHolding = false;
  };

  bool isUnderWay(const std::string& placement) const EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return placements_.contains(placement);
  }
  /// False when it was there.
  bool insert(const std::string& placement) EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    return placements_.insert(placement).second;
  }
  void end(const std::string& placement) EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    placements_.erase(placement);
  }

  mutable Mutex mutex_;
  std::set<std::string> placements_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
