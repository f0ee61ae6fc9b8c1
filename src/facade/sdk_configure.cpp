// The configure flow: from the application's identifier to a configured SDK that precaches by itself.

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "device/init_request_builder.hpp"
#include "facade/flag_mark.hpp"
#include "facade/sdk.hpp"
#include "model/kinds.hpp"

namespace vantorium {

namespace {

enum class ConfigureState { unconfigured, configuring, configured };

/// Enters "configuring" if nothing was under way; tells what was before.
ConfigureState beginConfiguring(SdkContext& context) {
  return context.updateFlags([](SdkContext::Flags& flags) {
    if (flags.isConfigured) return ConfigureState::configured;
    if (flags.isConfiguring) return ConfigureState::configuring;
    flags.isConfiguring = true;
    return ConfigureState::unconfigured;
  });
}

void announce(SdkContext& context, const std::shared_ptr<DispatchQueue>& queue, bool success,
              const std::optional<Error>& error, const Sdk::Completion& completion) {
  const auto method = success ? DelegateMethod::didConfigure : DelegateMethod::didFailConfigure;
  context.tellDelegate(method, [success, error](VantoriumDelegate& delegate) {
    if (success) {
      delegate.didConfigure();
    } else {
      delegate.didFailConfigure(error);
    }
  });
  context.onQueue(queue, [completion, success, error] { completion(success, error); });
}

std::optional<std::string> userIDOf(const std::optional<Parameters>& parameters) {
  if (!parameters) return std::nullopt;
  const auto entry = parameters->find("userId");
  if (entry == parameters->end()) return std::nullopt;
  const auto* const text = std::get_if<std::string>(&entry->second);
  return text != nullptr ? std::optional(*text) : std::nullopt;
}

bool isAutoCached(const std::map<std::string, std::string>& placement) {
  const auto type = placement.find("type");
  if (type == placement.end()) return false;
  switch (adUnitType(type->second)) {
    case AdUnitType::videoInterstitial:
    case AdUnitType::rewardedVideo:
      return true;
    case AdUnitType::other:
      return false;
  }
  return false;
}

}  // namespace

void Sdk::configure(const std::string& appID, const std::optional<Parameters>& parameters,
                    std::shared_ptr<DispatchQueue> queue, Completion completion) {
  const auto mark =
      std::make_shared<FlagMark>(context_, [](SdkContext::Flags& flags) { flags.isConfiguring = false; });
  switch (beginConfiguring(*context_)) {
    case ConfigureState::configured:
      announce(*context_, queue, true, std::nullopt, completion);
      return;
    case ConfigureState::configuring:
      announce(*context_, queue, false, VantoriumError::functionInProgress(), completion);
      return;
    case ConfigureState::unconfigured:
      mark->takeCharge();
  }
  const auto services = client();
  const std::string userID = services->userDefaultsClient->recordLaunch(userIDOf(parameters));
  const nlohmann::json body = InitRequestBuilder::requestBody(
      context_->host(), *services->userDefaultsClient->defaults(), appID, userID, parameters);
  services->httpClient->setUp(body, [self = shared_from_this(), identity = Identity{appID, userID}, mark,
                                     queue = std::move(queue), completion = std::move(completion)](
                                        bool success, const std::optional<HTTPClient::Placements>& placements,
                                        const std::optional<Error>& error) {
    self->didSetUp(identity, success, placements, error);
    mark->clear();
    announce(*self->context_, queue, success, error, completion);
  });
  const auto idfa = body.find("idfa");
  if (idfa != body.end() && idfa->is_string()) {
    context_->host().print(fmt::format("VANTORIUM LOG: Copy your IDFA here: {}", idfa->get<std::string>()));
  }
}

void Sdk::didSetUp(const Identity& identity, bool success,
                   const std::optional<HTTPClient::Placements>& placements,
                   const std::optional<Error>& error) {
  {
    MutexLock lock(mutex_);
    identity_ = identity;
  }
  if (success) {
    context_->updateFlags([](SdkContext::Flags& flags) { flags.isConfigured = true; });
    if (placements && context_->flags().autoCaching) startAutoCaching(*placements);
  }
  if (error) context_->logError(error->errorMessage());
}

void Sdk::startAutoCaching(const HTTPClient::Placements& placements) {
  std::vector<std::string> chosen;
  for (const auto& placement : placements) {
    const auto id = placement.find("id");
    if (isAutoCached(placement) && id != placement.end()) chosen.push_back(id->second);
  }
  services()->autoCaching->start(chosen);
}

}  // namespace vantorium
