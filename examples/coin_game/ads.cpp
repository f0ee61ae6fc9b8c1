#include "ads.hpp"

using vantorium::Error;
using vantorium::Vantorium;
using vantorium::VantoriumError;

namespace {

std::string textOf(const std::optional<Error>& error) { return error ? error->localizedDescription() : ""; }

}  // namespace

void Ads::start(const std::string& appID, const std::string& placement) {
  appID_ = appID;
  placement_ = placement;
  Vantorium::setDelegate(weak_from_this());  // held weakly: the game keeps this object
  load();
}

void Ads::load() {
  setState(State::loading);
  if (Vantorium::isConfigured()) {
    Vantorium::precacheCampaigns(placement_, noted("precacheCampaigns"));
  } else {
    // Once configured the SDK fetches a video for the placement by itself, and the next one whenever one was
    // shown.
    Vantorium::configure(appID_, noted("configure"));
  }
}

void Ads::show() {
  if (!Vantorium::isCampaignReady(placement_)) return load();
  setState(State::showing);
  Vantorium::showCampaign(placement_,
                          [weak = weak_from_this()](bool success, const std::optional<Error>& error) {
                            if (const auto self = weak.lock()) self->didClose(success, error);
                          });
}

// Watched to the end, closed or failed: all the same here. Coins come with the reward, never with the
// closing.
void Ads::didClose(bool success, const std::optional<Error>& error) {
  timeline_.note("completion", "showCampaign",
                 {{"success", success ? "yes" : "no"}, {"error", textOf(error)}});
  if (Vantorium::isCampaignReady(placement_)) {
    setState(State::ready);
  } else {
    load();
  }
}

void Ads::didConfigure() { timeline_.note("delegate", "didConfigure"); }

void Ads::didFailConfigure(const std::optional<Error>& error) {
  timeline_.note("delegate", "didFailConfigure", {{"error", textOf(error)}});
  setState(State::unavailable);
}

void Ads::didPrecache(const std::string& placement) {
  timeline_.note("delegate", "didPrecache", {{"placement", placement}});
  if (placement == placement_ && state_ != State::showing) setState(State::ready);
}

void Ads::didFailPrecache(const std::string& placement, const std::optional<Error>& error) {
  timeline_.note("delegate", "didFailPrecache", {{"placement", placement}, {"error", textOf(error)}});
  if (placement != placement_ || state_ == State::showing) return;
  // Somebody asked before us, so the answer is still to come.
  if (error && VantoriumError::is(*error, VantoriumError::functionInProgressCode)) return;
  setState(State::unavailable);
}

void Ads::didReceiveClick(const std::string& placement) {
  timeline_.note("delegate", "didReceiveClick", {{"placement", placement}});
}

void Ads::didReceiveReward(const std::string& placement, std::int64_t amount) {
  timeline_.note("delegate", "didReceiveReward",
                 {{"placement", placement}, {"amount", std::to_string(amount)}});
  if (onReward) onReward(amount);
}

void Ads::setState(State state) {
  state_ = state;
  if (onStateChange) onStateChange(state);
}

/// For calls whose outcome the delegate hears as well: their completion is only noted.
Vantorium::Completion Ads::noted(std::string what) {
  return [weak = weak_from_this(), what = std::move(what)](bool success, const std::optional<Error>& error) {
    const auto self = weak.lock();
    if (!self) return;
    self->timeline_.note("completion", what, {{"success", success ? "yes" : "no"}, {"error", textOf(error)}});
  };
}
