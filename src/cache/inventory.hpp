#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cache/creative.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

/// A placement's next campaign.
struct NextCampaign {
  std::optional<ReadyCampaign> campaign;  ///< none when there is none that can be shown
  bool hasLost = false;                   ///< somebody has removed files of others that were before it
};

/// What there is to show, in memory alone: the campaigns of each placement that have not been shown, and the
/// template of rewardable popups. Any thread.
class Inventory {
 public:
  /// A campaign that waited longer than `lifetime` is stale: it gives way to a newer one, and is shown as
  /// long as there is none.
  explicit Inventory(Seconds lifetime) : lifetime_(lifetime) {}

  /// Adds a campaign behind those of the key; stale ones of the key go.
  void add(ReadyCampaign campaign, const std::string& forKey) EXCLUDES(mutex_);
  /// How many campaigns of the key can be shown.
  std::size_t getNumberOfCampaigns(const std::string& forKey) EXCLUDES(mutex_);
  /// How many of them are not stale at `now`.
  std::size_t getNumberOfFreshCampaigns(const std::string& forKey, Date now) EXCLUDES(mutex_);
  /// The first that can be shown, one that is stale at `now` only if all are. Quick, whatever there is.
  NextCampaign getNextCampaign(const std::string& forKey, Date now) EXCLUDES(mutex_);
  /// The same, and it counts as shown from here on: of it only its ID is remembered.
  NextCampaign takeNextCampaign(const std::string& forKey, Date now) EXCLUDES(mutex_);
  /// What the service is told of: the IDs of the key's campaigns, those that have not been shown first, then
  /// the latest that were. Each once.
  std::vector<std::string> campaignIDs(const std::string& forKey) const EXCLUDES(mutex_);
  /// Forgets all campaigns. The template stays.
  void clear() EXCLUDES(mutex_);

  /// None until the service has sent one.
  std::optional<std::string> rewardablePopup() const EXCLUDES(mutex_);
  void setRewardablePopup(std::optional<std::string> html) EXCLUDES(mutex_);

 private:
  struct Placement {
    std::vector<ReadyCampaign> campaigns;
    std::deque<std::string> shownIDs;  ///< the latest first
  };
  using Campaigns = std::vector<ReadyCampaign>;

  bool isStale(const ReadyCampaign& campaign, Date now) const;
  Campaigns campaignsOf(const std::string& key) const EXCLUDES(mutex_);
  std::optional<ReadyCampaign> firstOf(const std::string& key, Date now) const EXCLUDES(mutex_);
  /// Takes the campaign out; false when it was out already.
  bool remove(const ReadyCampaign& campaign, const std::string& key) EXCLUDES(mutex_);
  /// The key's campaigns that can be shown; those whose files are gone are dropped.
  Campaigns presentCampaigns(const std::string& key) EXCLUDES(mutex_);

  const Seconds lifetime_;
  mutable Mutex mutex_;
  std::map<std::string, Placement> placements_ GUARDED_BY(mutex_);
  std::optional<std::string> rewardablePopup_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
