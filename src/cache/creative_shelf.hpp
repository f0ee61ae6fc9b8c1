#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <vector>

#include <vantorium/error.hpp>

#include "cache/creative.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

/// Which creatives there are, so that a campaign can share the files of an earlier one.
///
/// It knows every creative that was added, weakly: those live as long as the campaigns and screens that own
/// them. Those of campaigns that have been shown are kept beyond that, within a budget and a number; the
/// least recently used goes first. Any thread.
class CreativeShelf {
 public:
  /// `budget`: the bytes on disk of what is kept.
  explicit CreativeShelf(std::uint64_t budget) : budget_(budget) {}

  /// Makes it known for sharing.
  void add(const std::shared_ptr<const Creative>& creative) EXCLUDES(mutex_);
  /// The creatives with this campaign's film or page, those that have both first. Their files are there.
  std::vector<std::shared_ptr<const Creative>> find(const Campaign& campaign) EXCLUDES(mutex_);
  /// Its campaign has been shown: it is kept for the next one, unless it has no hash to be found by.
  void keep(const std::shared_ptr<const Creative>& creative) EXCLUDES(mutex_);
  /// It could not be shown: no campaign that has its film or its folder counts as ready from here on, or is
  /// shared. The files stay for whoever owns them.
  void forget(const std::shared_ptr<const Creative>& creative) EXCLUDES(mutex_);
  void clear() EXCLUDES(mutex_);

  /// Whether `failure` says that the disk is full and something could be given up: then what failed is worth
  /// one more try. The least recently used of the kept creatives that nobody else owns is removed inside this
  /// call, with those that share its film.
  bool makeRoom(const Error& failure) EXCLUDES(mutex_);

 private:
  using Kept = std::list<std::shared_ptr<const Creative>>;

  /// On disk; a film that several share counts once.
  std::uint64_t bytesOfKept() const REQUIRES(mutex_);
  Kept takeBeyondBudget() REQUIRES(mutex_);
  /// Of those that nobody else owns, and all that have the same film; empty when there is none.
  Kept takeLeastRecentlyUsed() REQUIRES(mutex_);

  const std::uint64_t budget_;
  Mutex mutex_;
  std::vector<std::weak_ptr<const Creative>> known_ GUARDED_BY(mutex_);
  Kept kept_ GUARDED_BY(mutex_);  ///< last used first
};

}  // namespace vantorium
