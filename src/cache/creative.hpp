#pragma once

#include <cstdint>
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

  /// Whether film and page are still there: others may empty the cache at any time. Two looks at the disk.
  bool isOnDisk() const;
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
