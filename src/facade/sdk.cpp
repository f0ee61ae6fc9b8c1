#include "facade/sdk.hpp"

#include <utility>

#include "protocol/service_url.hpp"
#include "screens/campaign_vc.hpp"

namespace vantorium {

std::shared_ptr<Sdk> Sdk::make(std::shared_ptr<Host> host) {
  auto sdk = std::make_shared<Sdk>(std::move(host));
  sdk->wire();
  return sdk;
}

Sdk::Sdk(std::shared_ptr<Host> host) : context_(std::make_shared<SdkContext>(std::move(host))) {}

Sdk::~Sdk() { context_->setErrorReporter(nullptr); }

void Sdk::wire() {
  context_->setErrorReporter([weak = weak_from_this()](const std::string& text) {
    if (const auto self = weak.lock()) self->uploadError(text);
  });
}

std::optional<Error> Sdk::setServiceConfiguration(ServiceConfiguration configuration) {
  if (auto error = checkServiceURL(configuration.baseURL)) return error;
  if (auto error = checkServiceURL(configuration.widgetURL)) return error;
  MutexLock lock(mutex_);
  if (isInUse_) {
    return VantoriumError::internalError(
        "The service cannot be changed once the SDK is in use. Set it before the first call.");
  }
  configuration_ = std::move(configuration);
  return std::nullopt;
}

/// Called once. The services ask the host while they are made, so the lock is not held meanwhile.
void Sdk::makeServices() {
  ServiceConfiguration configuration;
  {
    MutexLock lock(mutex_);
    isInUse_ = true;
    configuration = configuration_;
  }
  const auto client = std::make_shared<Client>(context_, std::move(configuration));
  const auto precacher = std::make_shared<CampaignPrecacher>(client);
  MutexLock lock(mutex_);
  client_ = client;
  precacher_ = precacher;
}

std::shared_ptr<Client> Sdk::client() {
  std::call_once(servicesMade_, [this] { makeServices(); });
  MutexLock lock(mutex_);
  return client_;
}

std::shared_ptr<CampaignPrecacher> Sdk::precacher() {
  std::call_once(servicesMade_, [this] { makeServices(); });
  MutexLock lock(mutex_);
  return precacher_;
}

void Sdk::uploadError(const std::string& text) {
  std::optional<Identity> identity;
  std::shared_ptr<Client> client;
  {
    MutexLock lock(mutex_);
    identity = identity_;
    client = client_;
  }
  if (identity && client) client->httpClient->logError(identity->appID, identity->userID, text);
}

void Sdk::precacheCampaigns(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                            Completion completion) {
  precacher()->precacheCampaigns(forPlacement, std::move(queue), std::move(completion));
}

bool Sdk::isCampaignReady(const std::string& placementID) {
  return precacher()->isCampaignReady(placementID);
}

void Sdk::canView(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                  Completion completion) {
  precacher()->canView(forPlacement, std::move(queue), std::move(completion));
}

std::optional<Error> Sdk::refusalToShow() {
  const SdkContext::Flags flags = context_->flags();
  if (!flags.isConfigured) return VantoriumError::notConfigured();
  if (std::this_thread::get_id() != mainThread_) {
    return VantoriumError::internalError("Ads are shown from the main thread. Call this function there.");
  }
  if (flags.isShowingAds) return VantoriumError::functionInProgress();
  const auto& reachability = client()->httpClient->reachability();
  if (!reachability) return VantoriumError::internalError();
  if (reachability->currentReachabilityStatus() == VantoriumReachability::NetworkStatus::notReachable) {
    return VantoriumError::noInternetConnection();
  }
  return std::nullopt;
}

void Sdk::showCampaign(const std::string& forPlacement,
                       std::optional<VantoriumServerParameter> serverParameter, Completion completion) {
  if (const auto refusal = refusalToShow()) {
    completion(false, refusal);
    return;
  }
  context_->updateFlags([&](SdkContext::Flags& flags) {
    flags.isShowingAds = true;
    flags.showingPlacement = forPlacement;
  });
  const auto stopShowing = [context = context_] {
    context->updateFlags([](SdkContext::Flags& flags) {
      flags.isShowingAds = false;
      flags.showingPlacement.reset();
    });
  };
  const auto replenish = [precacher = std::weak_ptr(precacher())](const std::string& placement) {
    if (const auto alive = precacher.lock())
      alive->precacheCampaigns(placement, nullptr, [](bool, auto&&) {});
  };
  const auto screen = std::make_shared<CampaignVC>(client(), forPlacement, replenish);
  if (!screen->campaign()) {
    stopShowing();
    const Error error = VantoriumError::noPrecachedDataToShow();
    completion(false, error);
    context_->logError(error.errorMessage());
    return;
  }
  shownScreen_ = screen;
  screen->showOverScreen(std::move(serverParameter),
                         [context = context_, stopShowing, completion = std::move(completion)](
                             bool success, const std::optional<Error>& error) {
                           stopShowing();
                           completion(success, error);
                           if (error) context->logError(error->errorMessage());
                         });
}

void Sdk::shutdown() {
  context_->setErrorReporter(nullptr);
  if (const auto screen = shownScreen_.lock()) {
    screen->cancel(VantoriumError::internalError("The SDK was shut down while the ad was shown."));
  }
  std::shared_ptr<Client> client;
  std::shared_ptr<CampaignPrecacher> precacher;
  {
    MutexLock lock(mutex_);
    client = client_;
    precacher = precacher_;
  }
  if (precacher) precacher->endRetrySeries();
  if (client) client->shutdown();
}

}  // namespace vantorium
