#include "cache/creative.hpp"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <tuple>

namespace vantorium {

namespace {

bool isFile(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(std::filesystem::symlink_status(path, ignored));
}

bool isUnchanged(const Directory& directory) {
  std::error_code error;
  const auto changedAt = std::filesystem::last_write_time(directory.path, error);
  return !error && changedAt == directory.changedAt;
}

/// All that says what the page is and where its parts lie.
auto pageOf(const Campaign& campaign) {
  return std::tie(campaign.type, campaign.endURL, campaign.endAssets, campaign.customImage, campaign.baseURL,
                  campaign.zippedURL, campaign.tag);
}

}  // namespace

bool Creative::isOnDisk() const {
  return isTrusted() && (!film || isFile(film->path())) && (!page || isFile(*page)) &&
         std::ranges::all_of(directories, isUnchanged);
}

bool Creative::hasFilmOf(const Campaign& campaign) const {
  return film && !campaign.hash.empty() && campaign.hash == record->hash;
}

bool Creative::hasPageOf(const Campaign& campaign) const {
  return !campaign.hash.empty() && campaign.hash == record->hash && pageOf(campaign) == pageOf(*record);
}

}  // namespace vantorium
