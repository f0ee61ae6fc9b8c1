#include "precache/native_ad_precacher.hpp"

#include <fmt/format.h>

#include <utility>

#include "platform/foundation/gather.hpp"
#include "precache/native_ad_controller.hpp"

namespace vantorium {

namespace {

constexpr int mostAdsPerRequest = 5;
constexpr int concurrentAds = 5;

}  // namespace

struct NativeAdPrecacher::Pass {
  std::string placement;
  PrecachingPlacements::Mark mark;  ///< held until the pass has ended
  bool shouldDownloadAssets = true;
  std::shared_ptr<DispatchQueue> queue;
  Completion completion;
  NativeAds ads;  ///< written once, before the work on them begins
};

NativeAdPrecacher::NativeAdPrecacher(std::shared_ptr<SdkContext> context,
                                     std::shared_ptr<HTTPClient> httpClient, CacheClient cache,
                                     std::shared_ptr<PrecachingPlacements> placements)
    : context_(std::move(context)),
      httpClient_(std::move(httpClient)),
      cache_(std::move(cache)),
      precachingPlacements_(std::move(placements)) {}

void NativeAdPrecacher::precacheNativeAds(const std::string& forPlacement,
                                          std::shared_ptr<VantoriumNativeAdOptions> options,
                                          std::shared_ptr<DispatchQueue> queue, Completion completion) {
  std::optional<Error> refusal;
  PrecachingPlacements::Beginning beginning;
  if (!context_->flags().isConfigured) {
    refusal = VantoriumError::notConfigured();
  } else {
    beginning = precachingPlacements_->begin(forPlacement, [] { return true; });
    if (beginning.isUnderWay) refusal = VantoriumError::functionInProgress();
  }
  if (refusal) {
    context_->onQueue(queue, [completion = std::move(completion), refusal] { completion({}, refusal); });
    return;
  }
  if (!options) options = std::make_shared<VantoriumNativeAdOptions>();
  if (options->numberOfAdsToPrecache > mostAdsPerRequest) options->numberOfAdsToPrecache = mostAdsPerRequest;
  const auto pass = std::make_shared<Pass>();
  pass->placement = forPlacement;
  pass->mark = std::move(beginning.mark);
  pass->shouldDownloadAssets = options->shouldDownloadAssets;
  pass->queue = std::move(queue);
  pass->completion = std::move(completion);
  httpClient_->getNativeAds(
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
  using Outcome = std::optional<Error>;
  gather<Outcome, std::shared_ptr<VantoriumNativeAd>>(
      pass->ads, concurrentAds, VantoriumError::internalError("The work was dropped. Try again."),
      [self = shared_from_this(), pass](const auto& ad, std::function<void(Outcome)> ended) {
        std::make_shared<NativeAdController>(ad, self->context_, self->cache_)
            ->precache(
                pass->queue, [context = self->context_, pass, ended = std::move(ended)](Outcome error) {
                  context->printLog(fmt::format(
                      "Native ad files successfully saved to disk for placement id: {}", pass->placement));
                  ended(std::move(error));
                });
      },
      [self = shared_from_this(), pass](const std::vector<Outcome>& outcomes) {
        Outcome error;
        for (const auto& each : outcomes) {
          if (each) error = each;
        }
        self->finish(pass, error);
      });
}

void NativeAdPrecacher::finish(const std::shared_ptr<Pass>& pass, const std::optional<Error>& error) const {
  pass->mark = nullptr;
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
