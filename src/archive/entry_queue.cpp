#include "archive/entry_queue.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <tuple>
#include <utility>

namespace vantorium {

namespace {

/// Entries that may be finished before the first that is not: what is kept of them stays small.
constexpr std::uint64_t mostAhead = 1024;

/// That one thread gets at a time.
constexpr std::size_t mostAtOnce = 128;
constexpr std::uint64_t mostBytesAtOnce = 1U << 20U;

ZipError refused(std::string detail, int systemCode = 0) {
  return ZipError(ZipError::unzipFail, std::move(detail), systemCode);
}

}  // namespace

ZipError entryFailure(const ZipEntry& entry, std::string_view what) {
  return refused(fmt::format("Entry {} {}.", shownName(entry.name), what));
}

ZipError unwritableEntry(const ZipEntry& entry, int code) {
  return refused(fmt::format("Entry {} cannot be written: {}.", shownName(entry.name), writingFailure(code)),
                 code);
}

ZipError givenUp() { return refused("It was given up."); }

EntryQueue::EntryQueue(const ArchiveSource& source, const std::filesystem::path& destination,
                       const ZipLimits& limits)
    : limits_(limits), archiveBytes_(source.size()), table_(source) {
  const MutexLock lock(mutex_);
  if (table_.flaw().empty()) {
    folder_.emplace(destination);
    const int code = folder_->error();
    if (code != 0)
      note(0, refused(fmt::format("The destination cannot be written to: {}.", writingFailure(code)), code));
  } else {
    note(0, refused(table_.flaw()));
  }
}

void EntryQueue::note(std::uint64_t number, ZipError failure) {
  if (number >= lowestFailed_) return;
  failure_ = std::move(failure);
  lowestFailed_ = number;
}

void EntryQueue::fail(std::uint64_t number, ZipError failure) {
  const MutexLock lock(mutex_);
  note(number, std::move(failure));
}

std::optional<ZipError> EntryQueue::failure() const {
  const MutexLock lock(mutex_);
  return failure_;
}

bool EntryQueue::hasMore() const {
  const MutexLock lock(mutex_);
  return !isEnded();
}

bool EntryQueue::isEnded() const { return failure_ || (!next_ && table_.rest() == 0); }

EntryQueue::Step EntryQueue::take(std::vector<EntryJob>& jobs) {
  const MutexLock lock(mutex_);
  jobs.clear();
  try {
    do {
      if (!next_ && !isEnded()) readNext();
    } while (!isEnded() && mayFollow(jobs) && !mustWait() && handOut(jobs));
  } catch (const std::exception&) {
    note(lastRead_, memoryFailure(ZipError::unzipFail));
  }
  if (!jobs.empty()) return Step::work;
  return isEnded() && out_.empty() ? Step::end : Step::wait;
}

/// Whether the next entry is for whoever gets these.
bool EntryQueue::mayFollow(const std::vector<EntryJob>& jobs) const {
  std::uint64_t bytes = 0;
  for (const EntryJob& job : jobs) bytes += job.entry.bytes;
  return jobs.empty() || (jobs.size() < mostAtOnce && bytes < mostBytesAtOnce &&
                          jobs.back().path.folder == next_->path.folder);
}

void EntryQueue::readNext() {
  const std::uint64_t number = ++lastRead_;
  if (number > limits_.entries)
    return note(number, refused(fmt::format("It has more than {} entries.", limits_.entries)));
  auto entry = table_.next(limits_.nameBytes);
  if (!entry) return note(number, refused(table_.flaw()));
  EntryJob job{.number = number, .entry = std::move(*entry), .path = {}, .folder = {}};
  if (const char* const flaw = readPath(job)) return note(number, entryFailure(job.entry, flaw));
  if (const auto excess = claim(job.entry)) return note(number, entryFailure(job.entry, *excess));
  nextPlace_ = {.number = number, .path = job.path.relative(), .isFolder = job.path.isFolder()};
  next_ = std::move(job);
}

/// Returns what is wrong with the entry's name, or null.
const char* EntryQueue::readPath(EntryJob& job) const {
  if (job.entry.nameBytes > limits_.nameBytes) return "has a name that is too long";
  const char* flaw = nullptr;
  if (auto path = readEntryPath(job.entry.name, flaw)) job.path = std::move(*path);
  return flaw;
}

/// Counts what the entry claims to have. Returns which limit that exceeds, or none.
std::optional<std::string> EntryQueue::claim(const ZipEntry& entry) {
  if (entry.bytes > limits_.totalBytes - claimedBytes_)
    return fmt::format("takes the archive over {} bytes", limits_.totalBytes);
  claimedBytes_ += entry.bytes;
  if (claimedBytes_ > limits_.ratioFreeBytes && claimedBytes_ / limits_.compressionRatio > archiveBytes_)
    return fmt::format("takes the archive over {} times its size", limits_.compressionRatio);
  if (entry.compressedBytes > archiveBytes_ * limits_.readRatio - claimedReading_)
    return fmt::format("has data that takes more than {} readings of the archive", limits_.readRatio);
  claimedReading_ += entry.compressedBytes;
  return std::nullopt;
}

bool EntryQueue::mustWait() const {
  if (next_->number - lastAskedFor_ > mostAhead) return true;
  for (const Place& other : out_) {  // an algorithm's function would be analysed as if it held no lock
    if (collide(nextPlace_, other)) return true;
  }
  return false;
}

/// Whether it matters which comes first: both are the same, or one is a file where the other needs a folder.
bool EntryQueue::collide(const Place& one, const Place& other) {
  const auto& [shorter, longer] =
      one.path.size() < other.path.size() ? std::tie(one, other) : std::tie(other, one);
  if (!longer.path.starts_with(shorter.path)) return false;
  if (longer.path.size() == shorter.path.size()) return true;
  return !shorter.isFolder && longer.path[shorter.path.size()] == '/';
}

bool EntryQueue::handOut(std::vector<EntryJob>& jobs) {
  EntryJob job = std::move(*next_);
  next_.reset();
  job.folder = folder_->makeFolder(job.path.folder);
  job.folderError = folder_->error();
  if (folder_->foldersMade() > limits_.folders) {
    const auto what = fmt::format("takes the archive over {} folders", limits_.folders);
    note(job.number, entryFailure(job.entry, what));
    return false;
  }
  jobs.push_back(std::move(job));
  out_.push_back(std::move(nextPlace_));
  return true;
}

void EntryQueue::finish(const EntryJob& job, std::optional<ZipError> failure) noexcept {
  const MutexLock lock(mutex_);
  const auto place = std::ranges::find(out_, job.number, &Place::number);
  if (place != out_.end()) {
    std::swap(*place, out_.back());
    out_.pop_back();
  }
  ++changes_;
  try {
    if (failure) {
      note(job.number, std::move(*failure));
    } else {
      finished_.emplace(job.number, Finished{job.entry.compressedBytes, job.path.relative()});
    }
  } catch (const std::exception&) {
    note(job.number, memoryFailure(ZipError::unzipFail));
  }
  changed_.notify_all();
}

std::optional<EntryQueue::Finished> EntryQueue::nextFinished() {
  const MutexLock lock(mutex_);
  auto node = finished_.extract(lastAskedFor_ + 1);
  if (node.empty()) return std::nullopt;
  ++lastAskedFor_;
  return std::move(node.mapped());
}

std::uint64_t EntryQueue::changes() const {
  const MutexLock lock(mutex_);
  return changes_;
}

void EntryQueue::waitForChange(std::uint64_t seen) {
  const auto patience = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
  const MutexLock lock(mutex_);
  while (changes_ == seen && changed_.wait_until(mutex_, patience) == std::cv_status::no_timeout) {
  }
}

}  // namespace vantorium
