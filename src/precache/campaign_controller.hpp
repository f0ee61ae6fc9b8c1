#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <vantorium/dispatch_queue.hpp>

#include "cache/cache_client.hpp"
#include "context/sdk_context.hpp"
#include "model/campaign.hpp"
#include "precache/creative_plan.hpp"

namespace vantorium {

/// Turns one campaign into a `Creative`: its film and its end card, whose page is rewritten to refer to the
/// local copies; or a playable's archive, unpacked where it lies, and the page that brings it to the screen.
/// What an earlier campaign has on disk is shared. A download that fails is tried twice more; what another
/// try cannot mend is not.
///
/// It lives until its completion has run.
class CampaignController : public std::enable_shared_from_this<CampaignController> {
 public:
  using Outcome = Result<std::shared_ptr<const Creative>>;
  using Completion = std::function<void(Outcome creative)>;

  /// Archives are unpacked on `unpackQueue`, one after another: so they take one of the few workers at most.
  CampaignController(std::shared_ptr<Campaign> campaign, std::shared_ptr<SdkContext> context,
                     CacheClient cache, std::shared_ptr<DispatchQueue> unpackQueue, std::string placementID);

  /// Precaches the campaign. Completes at once, on the caller's thread, when its creative is on disk already;
  /// later on `queue` (null is the main queue); after another try on the main queue. On failure nothing of it
  /// stays on disk. Any thread; once.
  void precache(std::shared_ptr<DispatchQueue> queue, Completion completion);

 private:
  bool isPlayable() const { return vantorium::isPlayable(campaign_->type); }
  void attempt();
  void didDownload(const std::vector<Result<File>>& files);
  void didFailToDownload(const Error& error);
  void finish();
  std::optional<Error> preparePage();
  std::optional<Error> unpack();
  std::optional<Error> updateHTMLWithRelativeAssets() const;
  std::shared_ptr<const Creative> makeCreative();
  void complete(Outcome outcome) const;

  const std::shared_ptr<Campaign> campaign_;
  const std::shared_ptr<SdkContext> context_;
  const CacheClient cache_;
  const std::shared_ptr<DispatchQueue> unpackQueue_;
  const std::string placementID_;

  // One step after another uses these; each begins when the one before has ended.
  std::shared_ptr<DispatchQueue> queue_;
  Completion completion_;
  CreativePlan plan_;
  std::vector<std::optional<File>>
      files_;  ///< one for each download of the plan; none as long as it is missing
  int tryCounter_ = 0;
  std::uint64_t unpackedBytes_ = 0;
  std::set<std::filesystem::path> directories_;  ///< where the page's files lie
};

}  // namespace vantorium
