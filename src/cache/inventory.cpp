#include "cache/inventory.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vantorium {

namespace {

/// More of them would not fit into a request.
constexpr std::size_t mostShownIDs = 100;
/// No service names its campaigns by a longer text; one that did would fill the memory.
constexpr std::size_t longestID = 1024;

}  // namespace

bool Inventory::isStale(const ReadyCampaign& campaign, Date now) const {
  return now - campaign.precachedAt > lifetime_;
}

void Inventory::add(ReadyCampaign campaign, const std::string& forKey) {
  Campaigns dropped;  // they go, with their files, when no lock is held
  const MutexLock lock(mutex_);
  auto& campaigns = placements_[forKey].campaigns;
  const auto stale = std::stable_partition(campaigns.begin(), campaigns.end(), [&](const auto& each) {
    return !isStale(each, campaign.precachedAt);
  });
  std::move(stale, campaigns.end(), std::back_inserter(dropped));
  campaigns.erase(stale, campaigns.end());
  campaigns.push_back(std::move(campaign));
}

Inventory::Campaigns Inventory::campaignsOf(const std::string& key) const {
  const MutexLock lock(mutex_);
  const auto found = placements_.find(key);
  return found == placements_.end() ? Campaigns() : found->second.campaigns;
}

std::optional<ReadyCampaign> Inventory::firstOf(const std::string& key, Date now) const {
  const MutexLock lock(mutex_);
  const auto found = placements_.find(key);
  if (found == placements_.end() || found->second.campaigns.empty()) return std::nullopt;
  const auto& campaigns = found->second.campaigns;
  const auto fresh = std::ranges::find_if(campaigns, [&](const auto& each) { return !isStale(each, now); });
  return fresh == campaigns.end() ? campaigns.front() : *fresh;
}

bool Inventory::remove(const ReadyCampaign& campaign, const std::string& key) {
  const MutexLock lock(mutex_);
  auto& campaigns = placements_[key].campaigns;
  return std::erase_if(campaigns, [&](const auto& one) { return one.campaign == campaign.campaign; }) > 0;
}

// The disk is looked at when no lock is held.
Inventory::Campaigns Inventory::presentCampaigns(const std::string& key) {
  Campaigns present;
  for (auto& each : campaignsOf(key)) {
    if (each.creative->isOnDisk()) {
      present.push_back(std::move(each));
    } else {
      remove(each, key);
    }
  }
  return present;
}

std::size_t Inventory::getNumberOfCampaigns(const std::string& forKey) {
  return presentCampaigns(forKey).size();
}

std::size_t Inventory::getNumberOfFreshCampaigns(const std::string& forKey, Date now) {
  return static_cast<std::size_t>(
      std::ranges::count_if(presentCampaigns(forKey), [&](const auto& each) { return !isStale(each, now); }));
}

NextCampaign Inventory::getNextCampaign(const std::string& forKey, Date now) {
  NextCampaign next{.campaign = firstOf(forKey, now)};
  while (next.campaign && !next.campaign->creative->isOnDisk()) {
    next.hasLost = true;
    remove(*next.campaign, forKey);
    next.campaign = firstOf(forKey, now);
  }
  return next;
}

NextCampaign Inventory::takeNextCampaign(const std::string& forKey, Date now) {
  auto next = getNextCampaign(forKey, now);
  while (next.campaign && !remove(*next.campaign, forKey))  // somebody else has just taken it
    next = getNextCampaign(forKey, now);
  if (!next.campaign || next.campaign->campaign->campaignID.size() > longestID) return next;
  const std::string& id = next.campaign->campaign->campaignID;
  const MutexLock lock(mutex_);
  auto& shown = placements_[forKey].shownIDs;
  std::erase(shown, id);
  shown.push_front(id);
  if (shown.size() > mostShownIDs) shown.pop_back();
  return next;
}

std::vector<std::string> Inventory::campaignIDs(const std::string& forKey) const {
  std::vector<std::string> ids;
  const auto add = [&ids](const std::string& id) {
    if (std::ranges::find(ids, id) == ids.end()) ids.push_back(id);
  };
  const MutexLock lock(mutex_);
  const auto found = placements_.find(forKey);
  if (found == placements_.end()) return ids;
  for (const auto& each : found->second.campaigns) add(each.campaign->campaignID);
  for (const auto& id : found->second.shownIDs) add(id);
  return ids;
}

void Inventory::clear() {
  std::map<std::string, Placement> dropped;
  const MutexLock lock(mutex_);
  dropped.swap(placements_);
}

std::optional<std::string> Inventory::rewardablePopup() const {
  const MutexLock lock(mutex_);
  return rewardablePopup_;
}

void Inventory::setRewardablePopup(std::optional<std::string> html) {
  const MutexLock lock(mutex_);
  rewardablePopup_ = std::move(html);
}

}  // namespace vantorium
