#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/dispatch_queue.hpp>
#include <vantorium/error.hpp>

#include "cache/cache_client.hpp"
#include "context/sdk_context.hpp"
#include "precache/precaching_placements.hpp"
#include "protocol/http_client.hpp"

namespace vantorium {

/// Fetches campaigns for placements and has their files put on disk. Any thread.
class CampaignPrecacher : public std::enable_shared_from_this<CampaignPrecacher> {
 public:
  using Completion = std::function<void(bool success, std::optional<Error> error)>;
  /// Told how the precaching of a placement ended, on the thread on which it did.
  /// It may have succeeded, and have an error all the same, when the last of several campaigns failed.
  using Observer =
      std::function<void(const std::string& placement, bool success, const std::optional<Error>& error)>;

  /// `placements` is shared with those who precache other kinds of ads.
  CampaignPrecacher(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPClient> httpClient,
                    CacheClient cache, std::shared_ptr<PrecachingPlacements> placements);

  /// Who hears of every precaching that was not refused. Set before the first.
  void setObserver(Observer observer) { observer_ = std::move(observer); }

  /// Precaches a campaign for the placement unless one is ready that has not waited for too long. The
  /// delegate hears of the result on the main queue, then the completion is called on `queue` (null: the main
  /// queue), once.
  void precacheCampaigns(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                         Completion completion);

  bool isCampaignReady(const std::string& placementID);
  /// The placement's next campaign, which counts as shown from here on; none when there is nothing to show.
  std::optional<ReadyCampaign> takeCampaign(const std::string& placementID);
  /// Asks the service whether the placement may be shown; answers on `queue` (null: the main queue).
  void canView(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
               Completion completion) const;

 private:
  /// One precaching of a placement, from the request to its end.
  struct Pass;
  struct Outcome;

  void refuse(const std::string& placement, const std::shared_ptr<DispatchQueue>& queue, const Error& error,
              Completion completion) const;
  bool needsFetch(const std::string& placement) const;
  void replaceLost(const std::string& placement);
  void tryPrecacheCampaigns(const std::shared_ptr<Pass>& pass, int numberOf);
  void precacheFetched(const std::shared_ptr<Pass>& pass,
                       const std::vector<std::shared_ptr<Campaign>>& campaigns);
  void endPass(const std::shared_ptr<Pass>& pass, const std::vector<Outcome>& outcomes);
  void didEnd(const std::string& placement, const std::shared_ptr<DispatchQueue>& queue, bool success,
              const std::optional<Error>& error, const Completion& completion) const;

  const std::shared_ptr<SdkContext> context_;
  const std::shared_ptr<HTTPClient> httpClient_;
  const CacheClient cache_;
  const std::shared_ptr<PrecachingPlacements> precachingPlacements_;
  const std::shared_ptr<DispatchQueue> unpackQueue_;
  Observer observer_;
};

}  // namespace vantorium
