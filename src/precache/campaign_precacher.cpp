#include "precache/campaign_precacher.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "platform/foundation/async_block_operation.hpp"
#include "precache/campaign_controller.hpp"

namespace vantorium {

namespace {

constexpr int campaignsPerFetch = 1;
constexpr int concurrentCampaigns = 5;
constexpr int concurrentPlacements = 1;
constexpr Seconds retryDelay{3600};
constexpr int retriesPerSeries = 5;

}  // namespace

struct CampaignPrecacher::Pass {
  std::string placement;
  std::shared_ptr<DispatchQueue> queue;
  Completion completion;

  Mutex mutex;
  std::vector<std::shared_ptr<CampaignController>> controllers GUARDED_BY(mutex);
  std::vector<std::shared_ptr<Campaign>> succeeded GUARDED_BY(mutex);
  std::optional<Error> lastError GUARDED_BY(mutex);
};

CampaignPrecacher::CampaignPrecacher(std::shared_ptr<Client> client,
                                     std::shared_ptr<PrecachingPlacements> placements)
    : client_(std::move(client)), context_(client_->context), precachingPlacements_(std::move(placements)) {}

void CampaignPrecacher::refuse(const std::string& placement, const std::shared_ptr<DispatchQueue>& queue,
                               const Error& error, Completion completion) const {
  context_->tellDelegate(DelegateMethod::didFailPrecache, [placement, error](VantoriumDelegate& delegate) {
    delegate.didFailPrecache(placement, error);
  });
  context_->onQueue(queue, [completion = std::move(completion), error] { completion(false, error); });
}

bool CampaignPrecacher::needsFetch(const std::string& placement) const {
  const int ready = client_->cacheClient->getNumberOfCampaigns(placement);
  if (ready == 0) return true;
  // The one that is left is on screen, and nobody else will replenish it.
  const SdkContext::Flags flags = context_->flags();
  return ready == 1 && !flags.autoCaching && flags.showingPlacement == placement;
}

void CampaignPrecacher::precacheCampaigns(const std::string& forPlacement,
                                          std::shared_ptr<DispatchQueue> queue, Completion completion) {
  if (!context_->flags().isConfigured) {
    refuse(forPlacement, queue, VantoriumError::notConfigured(), std::move(completion));
    return;
  }
  using Beginning = PrecachingPlacements::Beginning;
  const Beginning beginning =
      precachingPlacements_->begin(forPlacement, [&] { return needsFetch(forPlacement); });
  if (beginning == Beginning::underWay) {
    refuse(forPlacement, queue, VantoriumError::functionInProgress(), std::move(completion));
    return;
  }
  if (beginning == Beginning::ready) {
    context_->tellDelegate(DelegateMethod::didPrecache, [forPlacement](VantoriumDelegate& delegate) {
      delegate.didPrecache(forPlacement);
    });
    context_->onQueue(queue, [completion = std::move(completion)] { completion(true, std::nullopt); });
    return;
  }
  auto finished = [self = shared_from_this(), forPlacement, queue, completion = std::move(completion)](
                      bool success, const std::optional<Error>& error) {
    self->finish(forPlacement, queue, success, error, completion);
  };
  tryPrecacheCampaigns(forPlacement, campaignsPerFetch, std::move(queue), std::move(finished));
}

void CampaignPrecacher::finish(const std::string& placement, const std::shared_ptr<DispatchQueue>& queue,
                               bool success, const std::optional<Error>& error, Completion completion) {
  precachingPlacements_->end(placement);
  const auto method = success ? DelegateMethod::didPrecache : DelegateMethod::didFailPrecache;
  context_->tellDelegate(method, [placement, success, error](VantoriumDelegate& delegate) {
    if (success) {
      delegate.didPrecache(placement);
    } else {
      delegate.didFailPrecache(placement, error);
    }
  });
  context_->onQueue(queue,
                    [completion = std::move(completion), success, error] { completion(success, error); });
  checkAutoCaching(placement, error);
}

void CampaignPrecacher::tryPrecacheCampaigns(const std::string& forPlacement, int numberOf,
                                             std::shared_ptr<DispatchQueue> queue, Completion completion) {
  context_->printLog("Fetch campaigns from the server.");
  std::vector<std::string> cachedIDs;
  for (const auto& campaign : client_->cacheClient->getCampaigns(forPlacement)) {
    cachedIDs.push_back(campaign->campaignID);
  }
  auto pass = std::make_shared<Pass>();
  pass->placement = forPlacement;
  pass->queue = std::move(queue);
  pass->completion = std::move(completion);
  client_->httpClient->getCampaigns(
      forPlacement, numberOf, cachedIDs,
      [self = shared_from_this(), pass](const std::vector<std::shared_ptr<Campaign>>& campaigns,
                                        const std::optional<Error>& error) {
        if (error) {
          self->context_->logError(error->errorMessage());
          self->context_->onQueue(pass->queue, [pass, error] { pass->completion(false, error); });
          return;
        }
        self->context_->printLog("Campaigns successfully fetched from server.");
        self->precacheFetched(pass, campaigns);
      });
}

void CampaignPrecacher::precacheFetched(const std::shared_ptr<Pass>& pass,
                                        const std::vector<std::shared_ptr<Campaign>>& campaigns) {
  if (campaigns.empty()) {
    endPass(pass);  // a queue without operations never completes
    return;
  }
  const auto operations = std::make_shared<BlockOperationQueue>();
  operations->setMaxConcurrentOperationCount(concurrentCampaigns);
  operations->setCompletionBlock([self = shared_from_this(), pass] { self->endPass(pass); });
  std::vector<std::shared_ptr<AsyncBlockOperation>> batch;
  batch.reserve(campaigns.size());
  for (const auto& campaign : campaigns) {
    batch.push_back(std::make_shared<AsyncBlockOperation>(
        operations,
        [self = shared_from_this(), pass, campaign](const std::shared_ptr<AsyncBlockOperation>& operation) {
          self->precacheOne(pass, campaign, [operation] { operation->finish(); });
        }));
  }
  operations->addOperations(batch);
}

void CampaignPrecacher::precacheOne(const std::shared_ptr<Pass>& pass,
                                    const std::shared_ptr<Campaign>& campaign, std::function<void()> done) {
  const auto controller = std::make_shared<CampaignController>(campaign, client_, pass->placement);
  {
    MutexLock lock(pass->mutex);
    pass->controllers.push_back(controller);
  }
  controller->precache(pass->queue, [self = shared_from_this(), pass, campaign, done = std::move(done)](
                                        bool success, std::optional<Error> error) {
    if (success) {
      self->context_->printLog(
          fmt::format("Campaign files successfully saved to disk for placement id: {}", pass->placement));
    }
    {
      MutexLock lock(pass->mutex);
      if (success) pass->succeeded.push_back(campaign);
      pass->lastError = std::move(error);
    }
    done();
  });
}

void CampaignPrecacher::endPass(const std::shared_ptr<Pass>& pass) {
  std::vector<std::shared_ptr<CampaignController>> controllers;
  std::vector<std::shared_ptr<Campaign>> succeeded;
  std::optional<Error> lastError;
  {
    MutexLock lock(pass->mutex);
    controllers.swap(pass->controllers);
    succeeded = pass->succeeded;
    lastError = pass->lastError;
  }
  for (const auto& campaign : succeeded) client_->cacheClient->add(campaign, pass->placement);
  context_->onQueue(pass->queue, [context = context_, pass, success = !succeeded.empty(), lastError] {
    context->printLog(fmt::format("Precaching finished for placement id: {}", pass->placement));
    pass->completion(success, lastError);
  });
}

void CampaignPrecacher::startAutoCaching(const std::vector<std::string>& placements) {
  {
    MutexLock lock(mutex_);
    autoCachingPlacements_ = placements;
  }
  precacheCampaignsOneBy(placements);
}

void CampaignPrecacher::precacheCampaignsOneBy(const std::vector<std::string>& placements) {
  const auto operations = std::make_shared<BlockOperationQueue>();
  operations->setMaxConcurrentOperationCount(concurrentPlacements);
  for (const std::string& placement : placements) {
    operations->addOperation(std::make_shared<AsyncBlockOperation>(
        operations,
        [self = shared_from_this(), placement](const std::shared_ptr<AsyncBlockOperation>& operation) {
          self->precacheCampaigns(placement, nullptr,
                                  [operation](bool, const std::optional<Error>&) { operation->finish(); });
        }));
  }
}

void CampaignPrecacher::checkAutoCaching(const std::string& placement, const std::optional<Error>& error) {
  std::vector<std::string> placements;
  bool hasTimer = false;
  {
    MutexLock lock(mutex_);
    placements = autoCachingPlacements_;
    hasTimer = autoCachingTimer_ != nullptr;
  }
  const auto isReady = [this](const std::string& each) {
    return client_->cacheClient->getNumberOfCampaigns(each) > 0;
  };
  if (std::all_of(placements.begin(), placements.end(), isReady)) {
    endRetrySeries();
    return;
  }
  // Only the service's own failures are worth asking again for: it may have an ad in an hour.
  if (!error || !VantoriumError::is(*error, VantoriumError::internalErrorCode)) return;
  if (std::find(placements.begin(), placements.end(), placement) == placements.end()) return;
  if (!context_->flags().autoCaching || hasTimer) return;
  auto timer = context_->host().clock().schedule(retryDelay, false, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) self->autoCachingTimerHandler();
  });
  MutexLock lock(mutex_);
  if (!autoCachingTimer_) autoCachingTimer_.swap(timer);
}

void CampaignPrecacher::endRetrySeries() {
  std::unique_ptr<Timer> dropped;  // goes after the lock: a timer is the host's
  MutexLock lock(mutex_);
  dropped = std::move(autoCachingTimer_);
  autoCachingTimerCount_ = 0;
}

void CampaignPrecacher::autoCachingTimerHandler() {
  std::unique_ptr<Timer> fired;
  std::vector<std::string> placements;
  {
    MutexLock lock(mutex_);
    fired = std::move(autoCachingTimer_);
    if (autoCachingTimerCount_ + 1 > retriesPerSeries) {
      autoCachingTimerCount_ = 0;
      return;
    }
    ++autoCachingTimerCount_;
    placements = autoCachingPlacements_;
  }
  precacheCampaignsOneBy(placements);
}

bool CampaignPrecacher::isCampaignReady(const std::string& placementID) const {
  return context_->flags().isConfigured && client_->cacheClient->hasNextCampaign(placementID);
}

void CampaignPrecacher::canView(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                                Completion completion) const {
  if (!context_->flags().isConfigured) {
    context_->onQueue(
        queue, [completion = std::move(completion)] { completion(false, VantoriumError::notConfigured()); });
    return;
  }
  client_->httpClient->canView(forPlacement, [context = context_, queue = std::move(queue),
                                              completion = std::move(completion)](
                                                 bool allowed, std::optional<Error> error) {
    context->onQueue(queue, [completion, allowed, error = std::move(error)] { completion(allowed, error); });
  });
}

}  // namespace vantorium
