#include "precache/auto_caching.hpp"

#include <utility>

#include "platform/foundation/backoff.hpp"
#include "platform/foundation/completion_guard.hpp"

namespace vantorium {

AutoCaching::AutoCaching(std::shared_ptr<SdkContext> context, std::shared_ptr<CampaignPrecacher> precacher,
                         Seconds campaignLifetime)
    : context_(std::move(context)),
      precacher_(std::move(precacher)),
      campaignLifetime_(campaignLifetime),
      order_(std::make_shared<std::vector<std::string>>()) {}

void AutoCaching::start(const std::vector<std::string>& placements) {
  std::map<std::string, Placement> fresh;
  for (const auto& placement : placements) {
    fresh[placement].retry = std::make_shared<Retry>(context_, firstPause, longestPause);
  }
  const auto order = std::make_shared<const std::vector<std::string>>(placements);
  {
    const MutexLock lock(mutex_);
    placements_.swap(fresh);
    order_ = order;
  }
  precacheCampaignsOneBy(order, 0);
}

void AutoCaching::autoCachingTimerHandler() {
  Placements order;
  {
    const MutexLock lock(mutex_);
    order = order_;
  }
  precacheCampaignsOneBy(order, 0);
}

/// The next begins when this one has ended, or has taken too long.
void AutoCaching::precacheCampaignsOneBy(const Placements& placements, std::size_t index) {
  if (index >= placements->size() || context_->hasEnded()) return;
  // Whatever drops it, the others have their turn.
  const CompletionGuard<> goOn([self = shared_from_this(), placements, index] {
    self->precacheCampaignsOneBy(placements, index + 1);
  });
  const std::shared_ptr<Timer> timer = context_->host().clock().schedule(patience, false, [goOn] { goOn(); });
  precacher_->precacheCampaigns((*placements)[index], nullptr,
                                [goOn, timer](bool, const std::optional<Error>&) { goOn(); });
}

void AutoCaching::precache(const std::string& placement) {
  if (!context_->flags().autoCaching) return;
  precacher_->precacheCampaigns(placement, nullptr, [](bool, const std::optional<Error>&) {});
}

void AutoCaching::didShow(const std::string& placement, const std::optional<Error>& error) {
  if (error) return didPrecache(placement, false, error);
  precache(placement);
}

void AutoCaching::didPrecache(const std::string& placement, bool success, const std::optional<Error>& error) {
  if (!context_->flags().autoCaching || context_->hasEnded()) return;
  std::unique_ptr<Timer> renewal =
      success ? renewalTimer(placement) : nullptr;  // the old one goes without the lock
  std::shared_ptr<Retry> retry;
  {
    const MutexLock lock(mutex_);
    const auto found = placements_.find(placement);
    if (found == placements_.end()) return;
    retry = found->second.retry;
    if (success) found->second.renewal.swap(renewal);
  }
  if (success) {
    retry->reset();
  } else if (error && !retry->isPending()) {
    planRetry(*retry, placement, *error);
  }
}

void AutoCaching::planRetry(Retry& retry, const std::string& placement, const Error& error) {
  auto again = [weak = weak_from_this(), placement] {
    if (const auto self = weak.lock()) self->precache(placement);
  };
  if (VantoriumError::is(error, VantoriumError::internalErrorCode)) {
    retry.schedule(Backoff::withChance(refusalPause), std::move(again));
  } else {
    retry.schedule(std::move(again));
  }
}

std::unique_ptr<Timer> AutoCaching::renewalTimer(const std::string& placement) {
  // Never before its lifetime is over, whatever chance says.
  const Seconds pause = Backoff::withChance(campaignLifetime_ * 1.3);
  return context_->host().clock().schedule(pause, false, [weak = weak_from_this(), placement] {
    if (const auto self = weak.lock()) self->precache(placement);
  });
}

void AutoCaching::end() {
  std::map<std::string, Placement> dropped;
  const MutexLock lock(mutex_);
  dropped.swap(placements_);
}

}  // namespace vantorium
