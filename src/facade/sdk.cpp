#include "facade/sdk.hpp"

#include <fmt/format.h>
#include <unistd.h>

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
  const auto client = std::make_shared<Client>(context_, configuration);
  const auto placements = std::make_shared<PrecachingPlacements>();
  const auto precacher = std::make_shared<CampaignPrecacher>(client, placements);
  const auto nativeAdPrecacher = std::make_shared<NativeAdPrecacher>(client, placements);
  MutexLock lock(mutex_);
  client_ = client;
  precacher_ = precacher;
  nativeAdPrecacher_ = nativeAdPrecacher;
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

std::shared_ptr<NativeAdPrecacher> Sdk::nativeAdPrecacher() {
  std::call_once(servicesMade_, [this] { makeServices(); });
  MutexLock lock(mutex_);
  return nativeAdPrecacher_;
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

std::optional<std::string> Sdk::userID() {
  MutexLock lock(mutex_);
  return identity_ ? std::optional(identity_->userID) : std::nullopt;
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

void Sdk::autoCachingTimerHandler() { precacher()->autoCachingTimerHandler(); }

void Sdk::shutdown() {
  hasEnded_ = true;
  context_->setErrorReporter(nullptr);
  for (const auto& each : std::exchange(shownScreens_, {})) {
    if (const auto screen = each.lock()) screen->cancel(shutDownWhileShowing());
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
