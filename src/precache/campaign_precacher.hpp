#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/dispatch_queue.hpp>
#include <vantorium/error.hpp>

#include "client/client.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "precache/precaching_placements.hpp"

namespace vantorium {

/// Keeps campaigns ready: fetches them for a placement and has their files put on disk, and does so by itself
/// for the auto-caching placements, trying again hourly when the service has nothing. Any thread.
class CampaignPrecacher : public std::enable_shared_from_this<CampaignPrecacher> {
 public:
  using Completion = std::function<void(bool success, std::optional<Error> error)>;

  /// `placements` is shared with those who precache other kinds of ads.
  CampaignPrecacher(std::shared_ptr<Client> client, std::shared_ptr<PrecachingPlacements> placements);

  /// Precaches a campaign for the placement unless one is ready. The delegate hears of the result on the main
  /// queue, then the completion is called on `queue` (null: the main queue), once.
  void precacheCampaigns(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                         Completion completion) EXCLUDES(mutex_);
  /// Replaces the placements that are kept precached, and precaches them one after another.
  void startAutoCaching(const std::vector<std::string>& placements) EXCLUDES(mutex_);

  bool isCampaignReady(const std::string& placementID) const;
  /// Asks the service whether the placement may be shown; answers on `queue` (null: the main queue).
  void canView(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
               Completion completion) const;

  /// What the retry timer calls: tries all placements again, unless that was the last retry of its series.
  void autoCachingTimerHandler() EXCLUDES(mutex_);
  /// Drops the retry timer and its count. A later failure may start a new series.
  void endRetrySeries() EXCLUDES(mutex_);

 private:
  /// One fetch and what it brought.
  struct Pass;

  void refuse(const std::string& placement, const std::shared_ptr<DispatchQueue>& queue, const Error& error,
              Completion completion) const;
  bool needsFetch(const std::string& placement) const;
  void finish(const std::string& placement, const std::shared_ptr<DispatchQueue>& queue, bool success,
              const std::optional<Error>& error, Completion completion) EXCLUDES(mutex_);
  void tryPrecacheCampaigns(const std::string& forPlacement, int numberOf,
                            std::shared_ptr<DispatchQueue> queue, Completion completion);
  void precacheFetched(const std::shared_ptr<Pass>& pass,
                       const std::vector<std::shared_ptr<Campaign>>& campaigns);
  void precacheOne(const std::shared_ptr<Pass>& pass, const std::shared_ptr<Campaign>& campaign,
                   std::function<void()> done);
  void endPass(const std::shared_ptr<Pass>& pass);
  void precacheCampaignsOneBy(const std::vector<std::string>& placements);
  void checkAutoCaching(const std::string& placement, const std::optional<Error>& error) EXCLUDES(mutex_);

  const std::shared_ptr<Client> client_;
  const std::shared_ptr<SdkContext> context_;
  const std::shared_ptr<PrecachingPlacements> precachingPlacements_;
  mutable Mutex mutex_;
  std::vector<std::string> autoCachingPlacements_ GUARDED_BY(mutex_);
  std::unique_ptr<Timer> autoCachingTimer_ GUARDED_BY(mutex_);
  int autoCachingTimerCount_ GUARDED_BY(mutex_) = 0;
};

}  // namespace vantorium
