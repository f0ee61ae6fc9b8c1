#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cache/stored_path.hpp"
#include "model/campaign.hpp"
#include "platform/foundation/clock.hpp"

namespace vantorium {

/// What came of one request for a file.
struct Answer {
  std::string url;
  int status = 0;
  std::string contentType;  ///< the media type alone, in lower case; empty when the answer named none
  std::uint64_t bytes = 0;
};

/// A directory as it was when all its files were there: who removes one changes its time.
struct Directory {
  std::string path;
  std::filesystem::file_time_type changedAt;
};

/// The files of one campaign, whole and on disk: what a precache ends in and what a screen is handed. It
/// never changes; campaigns of the same creative share one, and its files go with its last owner.
struct Creative {
  std::shared_ptr<const Campaign> record;    ///< what it was fetched for
  std::shared_ptr<const StoredPath> film;    ///< null for none
  std::shared_ptr<const StoredPath> folder;  ///< all that the page may read; null when there is no page
  std::optional<std::string> page;           ///< the page that opens, a path inside the folder
  std::uint64_t filmBytes = 0;               ///< on disk
  std::uint64_t folderBytes = 0;             ///< on disk, all its files together
  std::vector<Answer> answers;               ///< one for each file that was fetched for it, in order
  std::vector<Directory> directories;        ///< where the page's files lie, the folder among them

  /// Whether film and page are still there, and no file of the page was removed: others may empty the cache
  /// at any time. Also false once its film or folder is not trusted any more. A look at the disk for the
  /// film, the page and each directory.
  bool isOnDisk() const;
  /// Whether neither its film nor its folder turned out to be one that cannot be shown.
  bool isTrusted() const { return (!film || film->isTrusted()) && (!folder || folder->isTrusted()); }
  /// Whether `campaign` wants the same film: a hash that is not empty and agrees.
  bool hasFilmOf(const Campaign& campaign) const;
  /// Whether its page, archive and folder would be the same, too.
  bool hasPageOf(const Campaign& campaign) const;
};

/// A campaign that can be shown: its record and its files.
struct ReadyCampaign {
  std::shared_ptr<Campaign> campaign;
  std::shared_ptr<const Creative> creative;
  Date precachedAt;
};

}  // namespace vantorium
