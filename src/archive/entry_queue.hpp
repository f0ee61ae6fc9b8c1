#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/archive_source.hpp"
#include "archive/confined_folder.hpp"
#include "archive/entry_path.hpp"
#include "archive/zip_error.hpp"
#include "archive/zip_limits.hpp"
#include "archive/zip_table.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

/// An entry that somebody is to unpack, and where.
struct EntryJob {
  std::uint64_t number = 0;  ///< its place in the archive, from 1
  ZipEntry entry;
  EntryPath path;
  OpenFolder folder;    ///< none when it could not be made
  int folderError = 0;  ///< why, an `errno` value
};

/// Hands out the entries of an archive in their order, to several threads at a time, and gathers what became
/// of them. Whatever the threads do, it ends as if one had unpacked entry after entry: entries that go to the
/// same place are never out together, folders are made and limits are kept in the order of the archive, and
/// the failure is that of the first entry that fails. Any thread.
class EntryQueue {
 public:
  /// The source outlives the queue.
  EntryQueue(const ArchiveSource& source, const std::filesystem::path& destination, const ZipLimits& limits);

  enum class Step {
    work,  ///< there are entries
    wait,  ///< there is none before another one is finished
    end    ///< there is none any more, and none is out
  };
  /// The next entries: several if they are small and go into one folder, for a file system makes the files of
  /// a folder one after the other, whoever asks. Whoever gets them calls `finish` with each, in their order.
  Step take(std::vector<EntryJob>& jobs) EXCLUDES(mutex_);
  void finish(const EntryJob& job, std::optional<ZipError> failure) noexcept EXCLUDES(mutex_);
  /// The work has failed with this entry; 0 for all of it. Nothing is handed out any more.
  void fail(std::uint64_t number, ZipError failure) EXCLUDES(mutex_);
  /// Whether an earlier entry has failed, so that this one is not needed any more.
  bool isAbandoned(std::uint64_t number) const { return lowestFailed_ < number; }
  std::optional<ZipError> failure() const EXCLUDES(mutex_);
  bool hasMore() const EXCLUDES(mutex_);

  struct Finished {
    std::uint64_t compressedBytes = 0;
    std::string path;  ///< below the destination
  };
  /// The first entry that was finished well and not asked for yet, if all before it are, too.
  std::optional<Finished> nextFinished() EXCLUDES(mutex_);
  /// How often something was finished.
  std::uint64_t changes() const EXCLUDES(mutex_);
  /// Returns when `changes` is another number than this one, or after some hundredths of a second.
  void waitForChange(std::uint64_t seen) EXCLUDES(mutex_);

 private:
  struct Place {
    std::uint64_t number = 0;
    std::string path;
    bool isFolder = false;
  };

  void readNext() REQUIRES(mutex_);
  const char* readPath(EntryJob& job) const;
  std::optional<std::string> claim(const ZipEntry& entry) REQUIRES(mutex_);
  bool handOut(std::vector<EntryJob>& jobs) REQUIRES(mutex_);
  bool mayFollow(const std::vector<EntryJob>& jobs) const REQUIRES(mutex_);
  bool mustWait() const REQUIRES(mutex_);
  bool isEnded() const REQUIRES(mutex_);
  void note(std::uint64_t number, ZipError failure) REQUIRES(mutex_);
  static bool collide(const Place& one, const Place& other);

  const ZipLimits limits_;
  const std::uint64_t archiveBytes_;
  std::atomic<std::uint64_t> lowestFailed_ = std::numeric_limits<std::uint64_t>::max();

  mutable Mutex mutex_;
  std::condition_variable_any changed_;
  ZipTable table_ GUARDED_BY(mutex_);
  std::optional<ConfinedFolder> folder_ GUARDED_BY(mutex_);  ///< none below an archive that is none
  std::optional<ZipError> failure_ GUARDED_BY(mutex_);
  std::optional<EntryJob> next_ GUARDED_BY(mutex_);  ///< read, and not yet handed out
  Place nextPlace_ GUARDED_BY(mutex_);
  std::vector<Place> out_ GUARDED_BY(mutex_);
  std::map<std::uint64_t, Finished> finished_ GUARDED_BY(mutex_);
  std::uint64_t lastRead_ GUARDED_BY(mutex_) = 0;
  std::uint64_t lastAskedFor_ GUARDED_BY(mutex_) = 0;
  std::uint64_t claimedBytes_ GUARDED_BY(mutex_) = 0;
  std::uint64_t claimedReading_ GUARDED_BY(mutex_) = 0;
  std::uint64_t changes_ GUARDED_BY(mutex_) = 0;
};

/// What an entry's failure says, with its name.
ZipError entryFailure(const ZipEntry& entry, std::string_view what);
/// The failure of an entry whose file could not be written.
ZipError unwritableEntry(const ZipEntry& entry, int code);
/// The caller wanted no more of it, or an earlier entry has failed.
ZipError givenUp();

}  // namespace vantorium
