#include "ads.hpp"

using vantorium::Error;
using vantorium::Vantorium;
using vantorium::VantoriumError;

namespace {

std::string textOf(const std::optional<Error>& error) { return error ? error->localizedDescription() : ""; }

}  // namespace

void Ads::start(const std::string& appID, const std::vector<std::string>& placements) {
  appID_ = appID;
  for (const std::string& placement : placements) setState(placement, State::loading);
  Vantorium::setDelegate(weak_from_this());  // held weakly: the game keeps this object
  configure();
}

// Once configured the SDK fetches an ad for each placement by itself, and the next one whenever one was
// shown.
void Ads::configure() { Vantorium::configure(appID_, noted("configure")); }

void Ads::retry() {
  const bool isConfigured = Vantorium::isConfigured();
  for (const auto& [placement, state] : std::map(states_)) {
    if (state != State::unavailable) continue;
    setState(placement, State::loading);
    if (isConfigured) load(placement);
  }
  if (!isConfigured) {
    configure();
  } else if (!hasTemplate_) {
    loadTemplate();
  }
}

void Ads::load(const std::string& placement) {
  setState(placement, State::loading);
  Vantorium::precacheCampaigns(placement, noted("precacheCampaigns"));
}

void Ads::show(const std::string& placement) {
  if (!Vantorium::isCampaignReady(placement)) return load(placement);
  setState(placement, State::showing);
  Vantorium::showCampaign(
      placement, [weak = weak_from_this(), placement](bool success, const std::optional<Error>& error) {
        if (const auto self = weak.lock()) self->didClose(placement, success, error);
      });
}

void Ads::showOfferWall(const std::string& placement) {
  Vantorium::showOfferWall(placement, closed(placement, "showOfferWall"));
}

void Ads::showSpecialOffer(const std::string& placement) {
  Vantorium::showRewardablePopup(placement, closed(placement, "showRewardablePopup"));
}

/// Coins for an offer come later, from the game's own service; here it is only noted that the page is gone.
Vantorium::Completion Ads::closed(std::string placement, std::string what) {
  return [weak = weak_from_this(), placement = std::move(placement), what = std::move(what)](
             bool success, const std::optional<Error>& error) {
    const auto self = weak.lock();
    if (!self) return;
    self->timeline_.note(
        "completion", what,
        {{"placement", placement}, {"success", success ? "yes" : "no"}, {"error", textOf(error)}});
    self->tellOffers();
    if (!self->hasTemplate_) self->loadTemplate();
  };
}

void Ads::tellOffers() {
  if (onOffersChange) onOffersChange(Vantorium::isConfigured(), hasTemplate_);
}

// Seen to the end, closed or failed: all the same here. Coins come with the reward, never with the closing.
void Ads::didClose(const std::string& placement, bool success, const std::optional<Error>& error) {
  timeline_.note("completion", "showCampaign",
                 {{"placement", placement}, {"success", success ? "yes" : "no"}, {"error", textOf(error)}});
  if (Vantorium::isCampaignReady(placement)) {
    setState(placement, State::ready);
  } else {
    load(placement);
  }
}

void Ads::didConfigure() {
  timeline_.note("delegate", "didConfigure");
  tellOffers();
  loadTemplate();
}

/// What special offers look like; the offer itself is fetched when it is shown.
void Ads::loadTemplate() {
  Vantorium::precacheRewardablePopupTemplate(
      [weak = weak_from_this()](bool success, const std::optional<Error>& error) {
        const auto self = weak.lock();
        if (!self) return;
        self->timeline_.note("completion", "precacheRewardablePopupTemplate",
                             {{"success", success ? "yes" : "no"}, {"error", textOf(error)}});
        self->hasTemplate_ = success;
        self->tellOffers();
      });
}

void Ads::didFailConfigure(const std::optional<Error>& error) {
  timeline_.note("delegate", "didFailConfigure", {{"error", textOf(error)}});
  for (const auto& [placement, state] : std::map(states_)) setState(placement, State::unavailable);
}

void Ads::didPrecache(const std::string& placement) {
  timeline_.note("delegate", "didPrecache", {{"placement", placement}});
  if (isWaitedFor(placement)) setState(placement, State::ready);
}

void Ads::didFailPrecache(const std::string& placement, const std::optional<Error>& error) {
  timeline_.note("delegate", "didFailPrecache", {{"placement", placement}, {"error", textOf(error)}});
  if (!isWaitedFor(placement)) return;
  // Somebody asked before us, so the answer is still to come.
  if (error && VantoriumError::is(*error, VantoriumError::functionInProgressCode)) return;
  setState(placement, State::unavailable);
}

bool Ads::isWaitedFor(const std::string& placement) const {
  const auto found = states_.find(placement);
  return found != states_.end() && found->second != State::showing;
}

void Ads::didReceiveClick(const std::string& placement) {
  timeline_.note("delegate", "didReceiveClick", {{"placement", placement}});
}

void Ads::didReceiveReward(const std::string& placement, std::int64_t amount) {
  timeline_.note("delegate", "didReceiveReward",
                 {{"placement", placement}, {"amount", std::to_string(amount)}});
  if (onReward) onReward(amount);
}

void Ads::setState(const std::string& placement, State state) {
  states_[placement] = state;
  if (onStateChange) onStateChange(placement, state);
}

/// For calls whose outcome the delegate hears as well: their completion is only noted.
Vantorium::Completion Ads::noted(std::string what) {
  return [weak = weak_from_this(), what = std::move(what)](bool success, const std::optional<Error>& error) {
    const auto self = weak.lock();
    if (!self) return;
    self->timeline_.note("completion", what, {{"success", success ? "yes" : "no"}, {"error", textOf(error)}});
  };
}
