#include <exception>
#include <utility>
#include <vector>

#include <vantorium/vantorium.hpp>

#include "facade/process.hpp"
#include "facade/sdk.hpp"
#include "platform/foundation/completion_guard.hpp"

namespace vantorium {

namespace {

Error noHost() {
  return VantoriumError::internalError("There is no host. Call Vantorium::setHost before anything else.");
}

/// None when there is not even memory for the words.
std::optional<Error> outOfMemory() noexcept {
  try {
    return VantoriumError::internalError("Out of memory. Free some and try again.");
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

/// Calls `use`. What it throws, for want of memory, ends here: nothing may reach the application.
template <typename Use>
void guarded(Use use) noexcept {
  try {
    use();
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): there is no memory to tell it with
  }
}

/// Calls `use` with the SDK, or completes with what is missing. The completion is called once, even when the
/// work that should do it is dropped.
template <typename Value, typename Use>
void withSdk(std::function<void(Value, std::optional<Error>)> completion, Use use) noexcept {
  guarded([&] {
    if (!completion) completion = [](Value, const std::optional<Error>&) {};
    const CompletionGuard once(std::move(completion), Value{}, outOfMemory());
    if (!once) return;  // it has completed
    if (const auto sdk = Process::shared().sdk()) {
      use(*sdk,
          [once](Value value, std::optional<Error> error) { once(std::move(value), std::move(error)); });
    } else {
      once(Value{}, noHost());
    }
  });
}

SdkContext::Flags flags() {
  const auto sdk = Process::shared().sdk();
  return sdk ? sdk->context()->flags() : SdkContext::Flags{};
}

void setFlag(bool SdkContext::Flags::*flag, bool value) {
  const auto sdk = Process::shared().sdk();
  if (sdk) sdk->context()->updateFlags([&](SdkContext::Flags& all) { all.*flag = value; });
}

}  // namespace

std::optional<Error> Vantorium::setHost(std::shared_ptr<Host> host) {
  return Process::shared().setHost(std::move(host));
}

std::optional<Error> Vantorium::setDeveloperSettings(const DeveloperSettings& settings) {
  const auto sdk = Process::shared().sdk();
  if (!sdk) return noHost();
  ServiceConfiguration configuration;
  configuration.baseURL = settings.baseURL;
  if (!settings.widgetURL.empty()) configuration.widgetURL = settings.widgetURL;
  configuration.trustedCertificate = settings.trustedCertificate;
  return sdk->setServiceConfiguration(std::move(configuration));
}

std::optional<Error> Vantorium::setCacheSettings(const CacheSettings& settings) {
  const auto sdk = Process::shared().sdk();
  return sdk ? sdk->setCacheSettings(settings) : noHost();
}

void Vantorium::shutdown() { Process::shared().end(); }

void Vantorium::configure(const std::string& withAppID, const std::optional<Parameters>& parameters,
                          std::shared_ptr<DispatchQueue> queue, Completion completion) {
  withSdk(std::move(completion), [&](Sdk& sdk, Completion answer) {
    sdk.configure(withAppID, parameters, std::move(queue), std::move(answer));
  });
}

void Vantorium::configure(const std::string& withAppID, const std::optional<Parameters>& parameters,
                          Completion completion) {
  configure(withAppID, parameters, nullptr, std::move(completion));
}

void Vantorium::configure(const std::string& withAppID, Completion completion) {
  configure(withAppID, std::nullopt, nullptr, std::move(completion));
}

void Vantorium::precacheCampaigns(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                                  Completion completion) {
  withSdk(std::move(completion), [&](Sdk& sdk, Completion answer) {
    sdk.precacheCampaigns(forPlacement, std::move(queue), std::move(answer));
  });
}

void Vantorium::precacheCampaigns(const std::string& forPlacement, Completion completion) {
  precacheCampaigns(forPlacement, nullptr, std::move(completion));
}

bool Vantorium::isCampaignReady(const std::string& placementID) {
  bool isReady = false;
  guarded([&] {
    const auto sdk = Process::shared().sdk();
    isReady = sdk && sdk->isCampaignReady(placementID);
  });
  return isReady;
}

void Vantorium::canView(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                        Completion completion) {
  withSdk(std::move(completion), [&](Sdk& sdk, Completion answer) {
    sdk.canView(forPlacement, std::move(queue), std::move(answer));
  });
}

void Vantorium::canView(const std::string& forPlacement, Completion completion) {
  canView(forPlacement, nullptr, std::move(completion));
}

void Vantorium::showCampaign(const std::string& forPlacement,
                             std::optional<VantoriumServerParameter> serverParameter, Completion completion) {
  withSdk(std::move(completion), [&](Sdk& sdk, Completion answer) {
    sdk.showCampaign(forPlacement, std::move(serverParameter), std::move(answer));
  });
}

void Vantorium::showCampaign(const std::string& forPlacement, Completion completion) {
  showCampaign(forPlacement, std::nullopt, std::move(completion));
}

void Vantorium::showOfferWall(const std::string& forPlacement,
                              std::optional<VantoriumServerParameter> serverParameter,
                              Completion completion) {
  withSdk(std::move(completion), [&](Sdk& sdk, Completion answer) {
    sdk.showOfferWall(forPlacement, std::move(serverParameter), std::move(answer));
  });
}

void Vantorium::showOfferWall(const std::string& forPlacement, Completion completion) {
  showOfferWall(forPlacement, std::nullopt, std::move(completion));
}

void Vantorium::showRewardablePopup(const std::string& forPlacement,
                                    std::optional<VantoriumServerParameter> serverParameter,
                                    Completion completion) {
  withSdk(std::move(completion), [&](Sdk& sdk, Completion answer) {
    sdk.showRewardablePopup(forPlacement, std::move(serverParameter), std::move(answer));
  });
}

void Vantorium::showRewardablePopup(const std::string& forPlacement, Completion completion) {
  showRewardablePopup(forPlacement, std::nullopt, std::move(completion));
}

void Vantorium::precacheRewardablePopupTemplate(std::shared_ptr<DispatchQueue> queue, Completion completion) {
  withSdk(std::move(completion), [&](Sdk& sdk, Completion answer) {
    sdk.precacheRewardablePopupTemplate(std::move(queue), std::move(answer));
  });
}

void Vantorium::precacheRewardablePopupTemplate(Completion completion) {
  precacheRewardablePopupTemplate(nullptr, std::move(completion));
}

void Vantorium::precacheNativeAds(const std::string& forPlacement,
                                  std::shared_ptr<VantoriumNativeAdOptions> options,
                                  std::shared_ptr<DispatchQueue> queue, NativeAdsCompletion completion) {
  withSdk(std::move(completion), [&](Sdk& sdk, NativeAdsCompletion answer) {
    sdk.precacheNativeAds(forPlacement, std::move(options), std::move(queue), std::move(answer));
  });
}

void Vantorium::precacheNativeAds(const std::string& forPlacement,
                                  std::shared_ptr<VantoriumNativeAdOptions> options,
                                  NativeAdsCompletion completion) {
  precacheNativeAds(forPlacement, std::move(options), nullptr, std::move(completion));
}

void Vantorium::precacheNativeAds(const std::string& forPlacement, NativeAdsCompletion completion) {
  precacheNativeAds(forPlacement, nullptr, nullptr, std::move(completion));
}

void Vantorium::populateNativeAdView(const std::shared_ptr<VantoriumNativeAdView>& view,
                                     const std::shared_ptr<VantoriumNativeAd>& with, const AdOptions& options,
                                     Completion completion) {
  withSdk(std::move(completion),
          [&](Sdk& sdk, const Completion& answer) { sdk.populateNativeAdView(view, with, options, answer); });
}

void Vantorium::populateNativeAdView(const std::shared_ptr<VantoriumNativeAdView>& view,
                                     const std::shared_ptr<VantoriumNativeAd>& with, Completion completion) {
  populateNativeAdView(view, with, {}, std::move(completion));
}

void Vantorium::reportNativeAdImpression(const std::string& impressionID) {
  guarded([&] {
    if (const auto sdk = Process::shared().sdk()) sdk->reportNativeAdImpression(impressionID);
  });
}

void Vantorium::reportNativeAdClick(const std::string& impressionID,
                                    const std::optional<VantoriumServerParameter>& serverParameter) {
  guarded([&] {
    if (const auto sdk = Process::shared().sdk()) sdk->reportNativeAdClick(impressionID, serverParameter);
  });
}

void Vantorium::reportNativeAdVideoStarted(const std::string& impressionID) {
  guarded([&] {
    if (const auto sdk = Process::shared().sdk()) sdk->reportNativeAdVideoStarted(impressionID);
  });
}

void Vantorium::reportNativeAdVideoEnded(const std::string& impressionID) {
  guarded([&] {
    if (const auto sdk = Process::shared().sdk()) sdk->reportNativeAdVideoEnded(impressionID);
  });
}

void Vantorium::autoCachingTimerHandler() {
  guarded([] {
    if (const auto sdk = Process::shared().sdk()) sdk->autoCachingTimerHandler();
  });
}

std::string Vantorium::getLog() {
  const auto sdk = Process::shared().sdk();
  return sdk ? sdk->context()->log() : std::string();
}

bool Vantorium::isConfigured() { return flags().isConfigured; }
void Vantorium::setIsConfigured(bool value) { setFlag(&SdkContext::Flags::isConfigured, value); }
bool Vantorium::isConfiguring() { return flags().isConfiguring; }
void Vantorium::setIsConfiguring(bool value) { setFlag(&SdkContext::Flags::isConfiguring, value); }
bool Vantorium::isShowingAds() { return flags().isShowingAds; }
void Vantorium::setIsShowingAds(bool value) { setFlag(&SdkContext::Flags::isShowingAds, value); }
bool Vantorium::autoCaching() { return flags().autoCaching; }
void Vantorium::setAutoCaching(bool value) { setFlag(&SdkContext::Flags::autoCaching, value); }

std::shared_ptr<VantoriumDelegate> Vantorium::delegate() {
  const auto sdk = Process::shared().sdk();
  return sdk ? sdk->context()->delegate() : nullptr;
}

void Vantorium::setDelegate(std::weak_ptr<VantoriumDelegate> delegate) {
  if (const auto sdk = Process::shared().sdk()) sdk->context()->setDelegate(std::move(delegate));
}

}  // namespace vantorium
