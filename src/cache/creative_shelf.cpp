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

/// Removes the files that no other creative shares.
void removeNow(const Creative& creative) {
  for (const auto& stored : {creative.film, creative.folder}) {
    if (stored && stored.use_count() <= 2) stored->remove();  // the creative's and this loop's
  }
}

}  // namespace

void CreativeShelf::add(const std::shared_ptr<const Creative>& creative) {
  if (creative->record->hash.empty()) return;
  const MutexLock lock(mutex_);
  std::erase_if(known_, [](const auto& each) { return each.expired(); });
  known_.push_back(creative);
}

std::vector<std::shared_ptr<const Creative>> CreativeShelf::find(const Campaign& campaign) {
  std::vector<std::shared_ptr<const Creative>> found;
  {
    const MutexLock lock(mutex_);
    for (const auto& each : known_) {
      auto creative = each.lock();
      if (creative && (creative->hasFilmOf(campaign) || creative->hasPageOf(campaign)))
        found.push_back(std::move(creative));
    }
  }
  std::erase_if(found, [](const auto& each) { return !each->isOnDisk(); });
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
  while (bytesOfKept() > budget_) taken.splice(taken.begin(), kept_, std::prev(kept_.end()));
  return taken;
}

void CreativeShelf::forget(const std::shared_ptr<const Creative>& creative) {
  std::vector<std::shared_ptr<const Creative>> held;  // go when no lock is held
  const MutexLock lock(mutex_);
  std::erase_if(known_, [&](const auto& each) {
    held.push_back(each.lock());
    return !held.back() || held.back() == creative || (creative->film && held.back()->film == creative->film);
  });
  kept_.remove(creative);
}

void CreativeShelf::clear() {
  Kept dropped;
  const MutexLock lock(mutex_);
  known_.clear();
  dropped.swap(kept_);
}

bool CreativeShelf::makeRoom(const Error& failure) {
  if (!isFullDisk(failure)) return false;
  std::shared_ptr<const Creative> given;
  {
    const MutexLock lock(mutex_);
    for (auto each = kept_.rbegin(); each != kept_.rend() && !given; ++each) {
      if (each->use_count() == 1) given = *each;
    }
    if (!given) return false;
    kept_.remove(given);
  }
  removeNow(*given);
  return true;
}

}  // namespace vantorium
