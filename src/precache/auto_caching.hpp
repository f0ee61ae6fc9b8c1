#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/error.hpp>

#include "context/retry.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "precache/campaign_precacher.hpp"

namespace vantorium {

/// Keeps a list of placements precached: when a precaching fails it is tried again by itself, and a campaign
/// that nobody has shown is replaced when it has waited for its lifetime. Any thread.
class AutoCaching : public std::enable_shared_from_this<AutoCaching> {
 public:
  /// After the service said that it has nothing: it may have an ad in an hour.
  static constexpr Seconds refusalPause{3600};
  /// After any other failure: at first, and at most.
  static constexpr Seconds firstPause{30}, longestPause{3600};
  /// How long a placement may keep the next one waiting.
  static constexpr Seconds patience{15};

  AutoCaching(std::shared_ptr<SdkContext> context, std::shared_ptr<CampaignPrecacher> precacher,
              Seconds campaignLifetime);

  /// Replaces the placements, and precaches them one after another; the first has begun when this returns.
  void start(const std::vector<std::string>& placements) EXCLUDES(mutex_);
  /// Precaches all placements again, in the same way.
  void autoCachingTimerHandler() EXCLUDES(mutex_);
  /// A precaching ended, whoever asked for it. Plans what is next for the placement, if it is one of these.
  void didPrecache(const std::string& placement, bool success, const std::optional<Error>& error)
      EXCLUDES(mutex_);
  /// A campaign of the placement is on screen, whichever placement: its next one is due. With an error its
  /// impression did not arrive, and the service may not be there.
  void didShow(const std::string& placement, const std::optional<Error>& error) EXCLUDES(mutex_);
  /// Drops every plan for a later time. Called when the SDK has ended: nothing begins after that.
  void end() EXCLUDES(mutex_);

 private:
  struct Placement {
    std::shared_ptr<Retry> retry;
    std::unique_ptr<Timer> renewal;
  };
  using Placements = std::shared_ptr<const std::vector<std::string>>;

  void precacheCampaignsOneBy(const Placements& placements, std::size_t index);
  void precache(const std::string& placement);
  void planRetry(Retry& retry, const std::string& placement, const Error& error);
  std::unique_ptr<Timer> renewalTimer(const std::string& placement);

  const std::shared_ptr<SdkContext> context_;
  const std::shared_ptr<CampaignPrecacher> precacher_;
  const Seconds campaignLifetime_;
  Mutex mutex_;
  Placements order_ GUARDED_BY(mutex_);
  std::map<std::string, Placement> placements_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
