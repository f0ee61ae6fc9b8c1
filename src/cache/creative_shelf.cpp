#include "cache/creative_shelf.hpp"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <set>

namespace vantorium {

namespace {

bool isFullDisk(const Error& error) {
  return error.domain() == "posix" && (error.code() == ENOSPC || error.code() == EDQUOT);
}

/// More than that, however small they are, cost more memory than they save requests.
constexpr std::size_t mostKept = 200;

}  // namespace

void CreativeShelf::add(const std::shared_ptr<const Creative>& creative) {
  if (creative->record->hash.empty()) return;
  const MutexLock lock(mutex_);
  std::erase_if(known_, [](const auto& each) { return each.expired(); });
  known_.push_back(creative);
}

std::vector<std::shared_ptr<const Creative>> CreativeShelf::find(const Campaign& campaign) {
  std::vector<std::shared_ptr<const Creative>> found;  // the others go, perhaps as the last, without the lock
  {
    const MutexLock lock(mutex_);
    for (const auto& each : known_) found.push_back(each.lock());
  }
  std::erase_if(found, [&](const auto& each) {
    return !each || !(each->hasFilmOf(campaign) || each->hasPageOf(campaign)) || !each->isOnDisk();
  });
  std::stable_partition(found.begin(), found.end(),
                        [&](const auto& each) { return each->hasPageOf(campaign); });
  return found;
}

void CreativeShelf::keep(const std::shared_ptr<const Creative>& creative) {
  if (creative->record->hash.empty() || creative->filmBytes + creative->folderBytes > budget_) return;
  Kept dropped;  // goes, with its files, when no lock is held
  const MutexLock lock(mutex_);
  const auto there = std::ranges::find(kept_, creative);
  if (there != kept_.end()) {
    kept_.splice(kept_.begin(), kept_, there);
    return;
  }
  kept_.push_front(creative);
  dropped = takeBeyondBudget();
}

std::uint64_t CreativeShelf::bytesOfKept() const {
  std::set<const StoredPath*> films;
  std::uint64_t bytes = 0;
  for (const auto& each : kept_) {
    bytes += each->folderBytes;
    if (films.insert(each->film.get()).second) bytes += each->filmBytes;
  }
  return bytes;
}

CreativeShelf::Kept CreativeShelf::takeBeyondBudget() {
  Kept taken;
  while (kept_.size() > mostKept || bytesOfKept() > budget_)
    taken.splice(taken.begin(), kept_, std::prev(kept_.end()));
  return taken;
}

void CreativeShelf::forget(const std::shared_ptr<const Creative>& creative) {
  for (const auto& stored : {creative->film, creative->folder})
    if (stored) stored->distrust();
  Kept dropped;
  const MutexLock lock(mutex_);
  for (auto each = kept_.begin(); each != kept_.end();) {
    const auto present = each++;
    if (!(*present)->isTrusted()) dropped.splice(dropped.end(), kept_, present);
  }
}

void CreativeShelf::clear() {
  Kept dropped;
  const MutexLock lock(mutex_);
  known_.clear();
  dropped.swap(kept_);
}

bool CreativeShelf::makeRoom(const Error& failure) {
  if (!isFullDisk(failure)) return false;
  Kept given;
  {
    const MutexLock lock(mutex_);
    given = takeLeastRecentlyUsed();
    // Nobody finds them any more, so that nobody shares what is about to go.
    std::erase_if(known_, [&](const auto& each) {
      return std::ranges::any_of(
          given, [&](const auto& one) { return !each.owner_before(one) && !one.owner_before(each); });
    });
  }
  for (const auto& each : given) {
    for (const auto& stored : {each->film, each->folder})
      if (stored) stored->remove();
  }
  return !given.empty();
}

CreativeShelf::Kept CreativeShelf::takeLeastRecentlyUsed() {
  for (auto oldest = kept_.rbegin(); oldest != kept_.rend(); ++oldest) {
    const Creative* const first = oldest->get();
    const auto film = first->film;
    const auto goesWithIt = [&](const auto& each) {
      return each.get() == first || (film && each->film == film);
    };
    const auto isFree = [&](const auto& each) { return !goesWithIt(each) || each.use_count() == 1; };
    const auto sharers = std::ranges::count_if(kept_, goesWithIt);
    // The film's owners are those that share it, and this function.
    if (!std::ranges::all_of(kept_, isFree) || (film && film.use_count() != sharers + 1)) continue;
    const auto isOther = [&](const auto& each) { return !goesWithIt(each); };
    Kept taken;
    taken.splice(taken.end(), kept_, std::stable_partition(kept_.begin(), kept_.end(), isOther), kept_.end());
    return taken;
  }
  return {};
}

}  // namespace vantorium
