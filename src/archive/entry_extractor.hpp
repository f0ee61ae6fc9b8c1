#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "archive/archive_source.hpp"
#include "archive/confined_folder.hpp"
#include "archive/entry_queue.hpp"
#include "archive/zip_error.hpp"
#include "archive/zip_reader.hpp"

namespace vantorium {

/// Unpacks entries into the folders that were opened for them. One thread at a time; several may each have
/// theirs for one archive.
class EntryExtractor {
 public:
  /// Source and password outlive it.
  EntryExtractor(const ArchiveSource& source, ConfinedFile::Existing existing,
                 const std::optional<std::string>& password)
      : source_(source), existing_(existing), password_(password), reader_(source) {}

  /// Asked with the number of the entry at hand; true ends it.
  using IsStopped = std::function<bool(std::uint64_t)>;
  /// Returns the failure; nothing of the entry is left then. Never throws.
  std::optional<ZipError> extract(const EntryJob& job, const IsStopped& isStopped) noexcept;

 private:
  using Failure = std::optional<ZipError>;

  Failure makeFolder(const EntryJob& job);
  Failure makeFile(const EntryJob& job, const IsStopped& isStopped);
  Failure copy(const EntryJob& job, const ConfinedFile& file, const IsStopped& isStopped);
  Failure check(const ZipEntry& entry, std::uint64_t written) const;
  Failure unreadable(const ZipEntry& entry, std::string_view flaw) const;
  Failure unwritable(const ZipEntry& entry, int code) const;

  const ArchiveSource& source_;
  const ConfinedFile::Existing existing_;
  const std::optional<std::string>& password_;
  ZipReader reader_;
};

}  // namespace vantorium
