// The entry points of the SDK for ads that the application lays out itself.
#include <utility>

#include "facade/sdk.hpp"
#include "native_ads/native_ad_view.hpp"

namespace vantorium {

void Sdk::precacheNativeAds(const std::string& forPlacement,
                            std::shared_ptr<VantoriumNativeAdOptions> options,
                            std::shared_ptr<DispatchQueue> queue, NativeAdPrecacher::Completion completion) {
  services()->nativeAdPrecacher->precacheNativeAds(forPlacement, std::move(options), std::move(queue),
                                                   std::move(completion));
}

void Sdk::populateNativeAdView(const std::shared_ptr<VantoriumNativeAdView>& view,
                               const std::shared_ptr<VantoriumNativeAd>& with, const AdOptions& options,
                               const Completion& completion) {
  std::optional<Error> refusal;
  if (!context_->flags().isConfigured) {
    refusal = VantoriumError::notConfigured();
  } else if (!isOnMainThread()) {
    refusal = VantoriumError::internalError(
        "Native ad views are filled on the main thread. Call populateNativeAdView there.");
  } else if (!view || !with) {
    refusal = VantoriumError::internalError(
        "The view or the ad is null. Give populateNativeAdView a view and an ad that was precached.");
  }
  if (refusal) {
    completion(false, refusal);
    return;
  }
  for (const auto& option : options) {
    if (const auto media = std::dynamic_pointer_cast<VantoriumMediaViewOptions>(option)) {
      if (const auto mediaView = view->outlets.mediaView.lock()) mediaView->options = *media;
    } else if (const auto parameter = std::dynamic_pointer_cast<VantoriumServerParameter>(option)) {
      view->serverParameter = *parameter;
    }
  }
  const auto services = client();
  view->show(with, {context_, services->httpClient, services->cacheClient.downloads});
  completion(true, std::nullopt);
}

void Sdk::reportNativeAdImpression(const std::string& impressionID) {
  if (context_->flags().isConfigured) client()->httpClient->reportImpression(impressionID);
}

void Sdk::reportNativeAdClick(const std::string& impressionID,
                              const std::optional<VantoriumServerParameter>& serverParameter) {
  if (!context_->flags().isConfigured) return;
  client()->httpClient->reportClick(impressionID,
                                    serverParameter ? serverParameter->parameters : std::nullopt);
}

void Sdk::reportNativeAdVideoStarted(const std::string& impressionID) {
  if (context_->flags().isConfigured) client()->httpClient->reportVideoStarted(impressionID);
}

void Sdk::reportNativeAdVideoEnded(const std::string& impressionID) {
  if (context_->flags().isConfigured) client()->httpClient->reportFinished(impressionID);
}

}  // namespace vantorium
