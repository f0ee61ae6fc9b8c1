#include "precache/native_ad_precacher.hpp"

#include <fmt/format.h>

#include <utility>

#include "platform/foundation/async_block_operation.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "precache/native_ad_controller.hpp"

namespace vantorium {

namespace {

constexpr int mostAdsPerRequest = 5;
constexpr int concurrentAds = 5;

}  // namespace

struct NativeAdPrecacher::Pass {
  std::string placement;
  bool shouldDownloadAssets = true;
  std::shared_ptr<DispatchQueue> queue;
  Completion completion;
  NativeAds ads;  ///< written once, before the work on them begins

  Mutex mutex;
  std::vector<std::shared_ptr<NativeAdController>> controllers GUARDED_BY(mutex);
  std::optional<Error> error GUARDED_BY(mutex);
};

NativeAdPrecacher::NativeAdPrecacher(std::shared_ptr<Client> client,
                                     std::shared_ptr<PrecachingPlacements> placements)
    : client_(std::move(client)), context_(client_->context), precachingPlacements_(std::move(placements)) {}

void NativeAdPrecacher::precacheNativeAds(const std::string& forPlacement,
                                          std::shared_ptr<VantoriumNativeAdOptions> options,
                                          std::shared_ptr<DispatchQueue> queue, Completion completion) {
  std::optional<Error> refusal;
  if (!context_->flags().isConfigured) {
    refusal = VantoriumError::notConfigured();
  } else if (precachingPlacements_->begin(forPlacement, [] { return true; }) ==
             PrecachingPlacements::Beginning::underWay) {
    refusal = VantoriumError::functionInProgress();
  }
  if (refusal) {
    context_->onQueue(queue, [completion = std::move(completion), refusal] { completion({}, refusal); });
    return;
  }
  if (!options) options = std::make_shared<VantoriumNativeAdOptions>();
  if (options->numberOfAdsToPrecache > mostAdsPerRequest) options->numberOfAdsToPrecache = mostAdsPerRequest;
  const auto pass = std::make_shared<Pass>();
  pass->placement = forPlacement;
  pass->shouldDownloadAssets = options->shouldDownloadAssets;
  pass->queue = std::move(queue);
  pass->completion = std::move(completion);
  client_->httpClient->getNativeAds(
      forPlacement, {{"creativeType", options->creativeType}}, options->numberOfAdsToPrecache, {},
      [self = shared_from_this(), pass](NativeAds ads, const std::optional<Error>& error) {
        pass->ads = std::move(ads);
        if (error) {
          self->context_->logError(error->errorMessage());
          self->finish(pass, error);
          return;
        }
        self->context_->printLog("Native ads successfully fetched from server.");
        self->precacheFetched(pass);
      });
}

void NativeAdPrecacher::precacheFetched(const std::shared_ptr<Pass>& pass) {
  if (!pass->shouldDownloadAssets || pass->ads.empty()) return finish(pass, std::nullopt);
  const auto operations = std::make_shared<BlockOperationQueue>();
  operations->setMaxConcurrentOperationCount(concurrentAds);
  operations->setCompletionBlock([self = shared_from_this(), pass] {
    std::vector<std::shared_ptr<NativeAdController>> controllers;  // go when no lock is held
    std::optional<Error> error;
    {
      const MutexLock lock(pass->mutex);
      controllers.swap(pass->controllers);
      error = pass->error;
    }
    self->finish(pass, error);
  });
  std::vector<std::shared_ptr<AsyncBlockOperation>> batch;
  for (const auto& ad : pass->ads) {
    batch.push_back(std::make_shared<AsyncBlockOperation>(
        operations,
        [self = shared_from_this(), pass, ad](const std::shared_ptr<AsyncBlockOperation>& operation) {
          self->precacheOne(pass, ad, [operation] { operation->finish(); });
        }));
  }
  operations->addOperations(batch);
}

void NativeAdPrecacher::precacheOne(const std::shared_ptr<Pass>& pass,
                                    const std::shared_ptr<VantoriumNativeAd>& ad,
                                    std::function<void()> done) {
  const auto controller = std::make_shared<NativeAdController>(ad, client_);
  {
    const MutexLock lock(pass->mutex);
    pass->controllers.push_back(controller);
  }
  controller->precache(
      pass->queue, [context = context_, pass, done = std::move(done)](bool, std::optional<Error> error) {
        context->printLog(
            fmt::format("Native ad files successfully saved to disk for placement id: {}", pass->placement));
        if (error) {
          const MutexLock lock(pass->mutex);
          pass->error = std::move(error);
        }
        done();
      });
}

void NativeAdPrecacher::finish(const std::shared_ptr<Pass>& pass, const std::optional<Error>& error) {
  precachingPlacements_->end(pass->placement);
  const auto method = error ? DelegateMethod::didFailPrecache : DelegateMethod::didPrecache;
  context_->tellDelegate(method, [placement = pass->placement, error](VantoriumDelegate& delegate) {
    if (error) {
      delegate.didFailPrecache(placement, error);
    } else {
      delegate.didPrecache(placement);
    }
  });
  context_->onQueue(pass->queue, [context = context_, pass, error] {
    if (!pass->ads.empty()) {
      context->printLog(fmt::format("Precaching finished for placement id: {}", pass->placement));
    }
    pass->completion(std::move(pass->ads), error);  // the application's from here on
  });
}

}  // namespace vantorium
