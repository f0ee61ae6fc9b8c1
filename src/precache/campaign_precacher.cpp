#include "precache/campaign_precacher.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "platform/foundation/completion_guard.hpp"
#include "platform/foundation/gather.hpp"
#include "precache/campaign_controller.hpp"

namespace vantorium {

namespace {

constexpr int campaignsPerFetch = 1;
constexpr int concurrentCampaigns = 5;

}  // namespace

struct CampaignPrecacher::Pass {
  Pass(std::string of, std::shared_ptr<DispatchQueue> on, Completion completion)
      : placement(std::move(of)),
        queue(std::move(on)),
        end(std::move(completion), false, VantoriumError::internalError("The work was dropped. Try again.")) {
  }

  const std::string placement;
  const std::shared_ptr<DispatchQueue> queue;
  const CompletionGuard<bool, std::optional<Error>> end;  ///< an exception ends a pass, too
  std::atomic<int> ended{0};                              ///< campaigns
};

/// What came of one campaign.
struct CampaignPrecacher::Outcome {
  std::shared_ptr<Campaign> campaign;
  CampaignController::Outcome creative;
  int order = 0;  ///< in which they ended
};

CampaignPrecacher::CampaignPrecacher(std::shared_ptr<SdkContext> context,
                                     std::shared_ptr<HTTPClient> httpClient, CacheClient cache,
                                     std::shared_ptr<PrecachingPlacements> placements)
    : context_(std::move(context)),
      httpClient_(std::move(httpClient)),
      cache_(std::move(cache)),
      precachingPlacements_(std::move(placements)),
      unpackQueue_(DispatchQueue::serial("vantorium.unpack")) {}

void CampaignPrecacher::refuse(const std::string& placement, const std::shared_ptr<DispatchQueue>& queue,
                               const Error& error, Completion completion) const {
  context_->tellDelegate(DelegateMethod::didFailPrecache, [placement, error](VantoriumDelegate& delegate) {
    delegate.didFailPrecache(placement, error);
  });
  context_->onQueue(queue, [completion = std::move(completion), error] { completion(false, error); });
}

bool CampaignPrecacher::needsFetch(const std::string& placement) const {
  const auto ready = cache_.inventory->getNumberOfFreshCampaigns(placement, context_->host().clock().now());
  if (ready == 0) return true;
  // Nobody else will replenish a placement whose ad is on screen.
  const SdkContext::Flags flags = context_->flags();
  return ready == 1 && !flags.autoCaching && flags.showingPlacement == placement;
}

void CampaignPrecacher::precacheCampaigns(const std::string& forPlacement,
                                          std::shared_ptr<DispatchQueue> queue, Completion completion) {
  if (!context_->flags().isConfigured)
    return refuse(forPlacement, queue, VantoriumError::notConfigured(), std::move(completion));
  auto beginning = precachingPlacements_->begin(forPlacement, [&] { return needsFetch(forPlacement); });
  if (beginning.isUnderWay)
    return refuse(forPlacement, queue, VantoriumError::functionInProgress(), std::move(completion));
  if (!beginning.mark) {
    context_->tellDelegate(DelegateMethod::didPrecache, [forPlacement](VantoriumDelegate& delegate) {
      delegate.didPrecache(forPlacement);
    });
    context_->onQueue(queue, [completion = std::move(completion)] { completion(true, std::nullopt); });
    return;
  }
  const auto pass = std::make_shared<Pass>(
      forPlacement, queue,
      [self = shared_from_this(), forPlacement, mark = std::move(beginning.mark), queue,
       completion = std::move(completion)](bool success, const std::optional<Error>& error) mutable {
        mark = nullptr;
        self->didEnd(forPlacement, queue, success, error, completion);
      });
  tryPrecacheCampaigns(pass, campaignsPerFetch);
}

void CampaignPrecacher::tryPrecacheCampaigns(const std::shared_ptr<Pass>& pass, int numberOf) {
  context_->printLog("Fetch campaigns from the server.");
  httpClient_->getCampaigns(
      pass->placement, numberOf, cache_.inventory->campaignIDs(pass->placement),
      [self = shared_from_this(), pass](const std::vector<std::shared_ptr<Campaign>>& campaigns,
                                        const std::optional<Error>& error) {
        if (error) {
          self->context_->logError(error->errorMessage());
          self->context_->onQueue(pass->queue, [pass, error] { pass->end(false, error); });
          return;
        }
        self->context_->printLog("Campaigns successfully fetched from server.");
        self->precacheFetched(pass, campaigns);
      });
}

void CampaignPrecacher::precacheFetched(const std::shared_ptr<Pass>& pass,
                                        const std::vector<std::shared_ptr<Campaign>>& campaigns) {
  const Outcome dropped{nullptr, VantoriumError::internalError("The work was dropped. Try again.")};
  gather<Outcome, std::shared_ptr<Campaign>>(
      campaigns, concurrentCampaigns, dropped,
      [self = shared_from_this(), pass](const auto& campaign, std::function<void(Outcome)> ended) {
        const auto controller = std::make_shared<CampaignController>(campaign, self->context_, self->cache_,
                                                                     self->unpackQueue_, pass->placement);
        controller->precache(pass->queue, [context = self->context_, pass, campaign,
                                           ended = std::move(ended)](CampaignController::Outcome creative) {
          if (creative) {
            context->printLog(fmt::format("Campaign files successfully saved to disk for placement id: {}",
                                          pass->placement));
          }
          ended({campaign, std::move(creative), ++pass->ended});
        });
      },
      [self = shared_from_this(), pass](std::vector<Outcome> outcomes) {
        std::ranges::stable_sort(outcomes, {}, &Outcome::order);
        self->endPass(pass, outcomes);
      });
}

void CampaignPrecacher::endPass(const std::shared_ptr<Pass>& pass, const std::vector<Outcome>& outcomes) {
  const Date now = context_->host().clock().now();
  bool success = false;
  std::optional<Error> lastError;
  for (const auto& [campaign, creative, order] : outcomes) {
    lastError = creative.error();
    if (!creative) continue;
    cache_.inventory->add({campaign, *creative, now}, pass->placement);
    success = true;
  }
  context_->onQueue(pass->queue, [self = shared_from_this(), pass, success, lastError] {
    self->context_->printLog(fmt::format("Precaching finished for placement id: {}", pass->placement));
    pass->end(success, lastError);
  });
}

void CampaignPrecacher::didEnd(const std::string& placement, const std::shared_ptr<DispatchQueue>& queue,
                               bool success, const std::optional<Error>& error,
                               const Completion& completion) const {
  // Before what an exception could keep from it: nothing else plans the next try.
  if (observer_) observer_(placement, success, error);
  const auto method = success ? DelegateMethod::didPrecache : DelegateMethod::didFailPrecache;
  context_->tellDelegate(method, [placement, success, error](VantoriumDelegate& delegate) {
    if (success) {
      delegate.didPrecache(placement);
    } else {
      delegate.didFailPrecache(placement, error);
    }
  });
  context_->onQueue(queue, [completion, success, error] { completion(success, error); });
}

bool CampaignPrecacher::isCampaignReady(const std::string& placementID) {
  if (!context_->flags().isConfigured) return false;
  const auto next = cache_.inventory->getNextCampaign(placementID, context_->host().clock().now());
  if (next.hasLost && !next.campaign) replaceLost(placementID);
  return next.campaign.has_value();
}

std::optional<ReadyCampaign> CampaignPrecacher::takeCampaign(const std::string& placementID) {
  auto next = cache_.inventory->takeNextCampaign(placementID, context_->host().clock().now());
  if (next.hasLost && !next.campaign) replaceLost(placementID);
  return std::move(next.campaign);
}

/// Somebody has removed the files of all that was ready.
void CampaignPrecacher::replaceLost(const std::string& placement) {
  if (context_->flags().autoCaching) precacheCampaigns(placement, nullptr, [](bool, auto&&) {});
}

void CampaignPrecacher::canView(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                                Completion completion) const {
  if (!context_->flags().isConfigured) {
    context_->onQueue(
        queue, [completion = std::move(completion)] { completion(false, VantoriumError::notConfigured()); });
    return;
  }
  httpClient_->canView(forPlacement, [context = context_, queue = std::move(queue),
                                      completion = std::move(completion)](bool allowed,
                                                                          std::optional<Error> error) {
    context->onQueue(queue, [completion, allowed, error = std::move(error)] { completion(allowed, error); });
  });
}

}  // namespace vantorium
