#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cache/download.hpp"
#include "cache/file_store.hpp"
#include "model/campaign.hpp"
#include "platform/foundation/result.hpp"

namespace vantorium {

/// What has to be fetched for one campaign, and where it goes: all addresses are checked before the first is
/// asked. The paths belong to the campaign; who drops them has them removed.
struct CreativePlan {
  std::shared_ptr<const StoredPath> film;    ///< null when it is shared, or there is none
  std::shared_ptr<const StoredPath> folder;  ///< null when it is shared, or there is no page
  std::vector<Download> downloads;           ///< the film first, then the page's files
  std::string archive;                       ///< a playable's, among the downloads; else empty
  std::optional<std::string> page;           ///< the page that will open; none for none
  std::vector<std::string> pageAddresses;    ///< what the page's text refers to its files by

  /// Plans what the campaign still needs: not the film when another has it. Fails when the record asks for
  /// what no try can fetch; the error names its field.
  static Result<CreativePlan> make(const Campaign& campaign, const FileStore& files, bool hasFilm);
};

}  // namespace vantorium
