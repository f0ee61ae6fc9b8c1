#include "facade/sdk.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "protocol/service_url.hpp"
#include "screens/base_view_controller.hpp"

namespace vantorium {

namespace {

/// Of a missing file nothing would be heard until the first exchange.
std::optional<Error> checkCertificate(const std::filesystem::path& file) {
  std::error_code ignored;
  const bool canBeRead = std::filesystem::is_regular_file(file, ignored) && access(file.c_str(), R_OK) == 0;
  if (file.empty() || canBeRead) return std::nullopt;
  return VantoriumError::internalError(
      fmt::format("The trusted certificate \"{}\" cannot be read. Give a PEM file.", file.string()));
}

}  // namespace

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
  if (auto error = checkCertificate(configuration.trustedCertificate)) return error;
  MutexLock lock(mutex_);
  if (isInUse_) {
    return VantoriumError::internalError(
        "The service cannot be changed once the SDK is in use. Set it before the first call.");
  }
  configuration.cacheBudget = configuration_.cacheBudget;
  configuration.campaignLifetime = configuration_.campaignLifetime;
  configuration_ = std::move(configuration);
  return std::nullopt;
}

std::optional<Error> Sdk::setCacheSettings(const CacheSettings& settings) {
  if (!(settings.campaignLifetime > 0))  // nor is it "not a number"
    return VantoriumError::internalError(
        "The lifetime of campaigns is not above 0. Give setCacheSettings a number of seconds.");
  MutexLock lock(mutex_);
  if (isInUse_) {
    return VantoriumError::internalError(
        "The cache's settings cannot be changed once the SDK is in use. Set them before the first call.");
  }
  configuration_.cacheBudget = settings.budget;
  // Longer than anybody lives is for ever, and still a date.
  configuration_.campaignLifetime = Seconds{std::min(settings.campaignLifetime, 100 * 365.25 * 24 * 3600)};
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
  const auto services = std::make_shared<Services>();
  services->widgetURL = configuration.widgetURL;
  services->client = Client::make(context_, configuration);
  const auto& [reachability, defaults, cache, httpClient, session] = services->client;
  const auto placements = std::make_shared<PrecachingPlacements>();
  services->precacher = std::make_shared<CampaignPrecacher>(context_, httpClient, cache, placements);
  services->nativeAdPrecacher = std::make_shared<NativeAdPrecacher>(context_, httpClient, cache, placements);
  services->autoCaching =
      std::make_shared<AutoCaching>(context_, services->precacher, configuration.campaignLifetime);
  services->precacher->setObserver(
      [weak = std::weak_ptr(services->autoCaching)](const auto& placement, bool success, const auto& error) {
        if (const auto autoCaching = weak.lock()) autoCaching->didPrecache(placement, success, error);
      });
  if (reachability) {
    services->onlineObservation = reachability->observeOnline([weak = std::weak_ptr(context_)] {
      if (const auto context = weak.lock()) context->tellOnline();
    });
  }
  MutexLock lock(mutex_);
  services_ = services;
}

std::shared_ptr<const Sdk::Services> Sdk::services() {
  std::call_once(servicesMade_, [this] { makeServices(); });
  MutexLock lock(mutex_);
  return services_;
}

std::shared_ptr<const Client> Sdk::client() {
  const auto all = services();
  return {all, &all->client};
}

void Sdk::uploadError(const std::string& text) {
  std::optional<Identity> identity;
  std::shared_ptr<const Services> services;
  {
    MutexLock lock(mutex_);
    identity = identity_;
    services = services_;
  }
  if (identity && services) services->client.httpClient->logError(identity->appID, identity->userID, text);
}

std::optional<std::string> Sdk::userID() {
  MutexLock lock(mutex_);
  return identity_ ? std::optional(identity_->userID) : std::nullopt;
}

void Sdk::precacheCampaigns(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                            Completion completion) {
  services()->precacher->precacheCampaigns(forPlacement, std::move(queue), std::move(completion));
}

bool Sdk::isCampaignReady(const std::string& placementID) {
  return services()->precacher->isCampaignReady(placementID);
}

void Sdk::canView(const std::string& forPlacement, std::shared_ptr<DispatchQueue> queue,
                  Completion completion) {
  services()->precacher->canView(forPlacement, std::move(queue), std::move(completion));
}

void Sdk::autoCachingTimerHandler() { services()->autoCaching->autoCachingTimerHandler(); }

void Sdk::shutdown() {
  hasEnded_ = true;
  context_->end();
  context_->setErrorReporter(nullptr);
  for (const auto& each : std::exchange(shownScreens_, {})) {
    if (const auto screen = each.lock()) screen->cancel(shutDownWhileShowing());
  }
  std::shared_ptr<const Services> services;
  {
    MutexLock lock(mutex_);
    services = services_;
  }
  if (!services) return;
  services->autoCaching->end();
  services->client.session->shutdown();
}

}  // namespace vantorium
