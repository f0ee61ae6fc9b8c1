// The entry points of the SDK that put an ad on screen.
#include <utility>

#include "facade/flag_mark.hpp"
#include "facade/sdk.hpp"
#include "precache/rewardable_popup_controller.hpp"
#include "screens/campaign_vc.hpp"
#include "screens/offer_wall_vc.hpp"
#include "screens/rewardable_popup_vc.hpp"

namespace vantorium {

namespace {

constexpr const char* templateIsMissing =
    "Rewardable Popup is not precached. Call precacheRewardablePopupTemplate function first.";

void stopShowing(SdkContext::Flags& flags) { flags.isShowingAds = false; }

void stopShowingPlacement(SdkContext::Flags& flags) {
  stopShowing(flags);
  flags.showingPlacement.reset();
}

}  // namespace

Error Sdk::shutDownWhileShowing() {
  return VantoriumError::internalError("The SDK was shut down while the ad was shown.");
}

std::optional<Error> Sdk::refusalToShow() const {
  if (!isOnMainThread()) {
    return VantoriumError::internalError("Ads are shown from the main thread. Call this function there.");
  }
  if (context_->flags().isShowingAds) return VantoriumError::functionInProgress();
  return std::nullopt;
}

std::optional<Error> Sdk::refusalToGoOnline() {
  const auto reachability = client()->reachability;
  if (!reachability) return VantoriumError::internalError();
  if (reachability->currentReachabilityStatus() == VantoriumReachability::NetworkStatus::notReachable) {
    return VantoriumError::noInternetConnection();
  }
  return std::nullopt;
}

std::shared_ptr<FlagMark> Sdk::beginShowing(std::optional<std::string> placement) {
  auto mark = std::make_shared<FlagMark>(context_, placement ? &stopShowingPlacement : &stopShowing);
  context_->updateFlags([&](SdkContext::Flags& flags) {
    flags.isShowingAds = true;
    if (placement) flags.showingPlacement.swap(placement);
  });
  mark->takeCharge();
  return mark;
}

void Sdk::show(const std::shared_ptr<FlagMark>& mark, const std::shared_ptr<BaseViewController>& screen,
               std::optional<VantoriumServerParameter> serverParameter, Completion completion) {
  std::erase_if(shownScreens_, [](const auto& each) { return each.expired(); });
  shownScreens_.push_back(screen);
  screen->showOverScreen(std::move(serverParameter),
                         [context = context_, mark, completion = std::move(completion)](
                             bool success, const std::optional<Error>& error) {
                           mark->clear();
                           completion(success, error);
                           if (error) context->logError(error->errorMessage());
                         });
}

void Sdk::showCampaign(const std::string& forPlacement,
                       std::optional<VantoriumServerParameter> serverParameter, Completion completion) {
  std::optional<Error> refusal;
  if (!context_->flags().isConfigured) refusal = VantoriumError::notConfigured();
  if (!refusal) refusal = refusalToShow();
  if (!refusal) refusal = refusalToGoOnline();
  if (refusal) {
    completion(false, refusal);
    return;
  }
  const auto mark = beginShowing(forPlacement);
  auto ready = services()->precacher->takeCampaign(forPlacement);
  if (ready) {
    showReady(mark, forPlacement, std::move(*ready), std::move(serverParameter), std::move(completion));
    return;
  }
  mark->clear();
  const auto error = VantoriumError::noPrecachedDataToShow();
  completion(false, error);
  context_->logError(error.errorMessage());
}

void Sdk::showReady(const std::shared_ptr<FlagMark>& mark, const std::string& placement, ReadyCampaign ready,
                    std::optional<VantoriumServerParameter> serverParameter, Completion completion) {
  Completion ended = [files = client()->cacheClient.files, creative = ready.creative,
                      completion = std::move(completion)](bool success, const std::optional<Error>& error) {
    if (success) {
      files->shelf().keep(creative);
    } else {
      files->shelf().forget(creative);
    }
    completion(success, error);
  };
  const auto replenish = [autoCaching = std::weak_ptr(services()->autoCaching)](
                             const std::string& shown, const std::optional<Error>& error) {
    if (const auto alive = autoCaching.lock()) alive->didShow(shown, error);
  };
  show(mark,
       std::make_shared<CampaignVC>(context_, client()->httpClient, placement, std::move(ready), replenish),
       std::move(serverParameter), std::move(ended));
}

void Sdk::showOfferWall(const std::string& forPlacement,
                        std::optional<VantoriumServerParameter> serverParameter, Completion completion) {
  const auto user = userID();
  std::optional<Error> refusal;
  if (!context_->flags().isConfigured || !user) refusal = VantoriumError::notConfigured();
  if (!refusal) refusal = refusalToShow();
  if (!refusal) refusal = refusalToGoOnline();
  if (refusal) {
    completion(false, refusal);
    return;
  }
  const auto mark = beginShowing(std::nullopt);
  show(mark, std::make_shared<OfferWallVC>(context_, services()->widgetURL, forPlacement, *user),
       std::move(serverParameter), std::move(completion));
}

void Sdk::showRewardablePopup(const std::string& forPlacement,
                              std::optional<VantoriumServerParameter> serverParameter,
                              Completion completion) {
  const auto html = client()->cacheClient.inventory->rewardablePopup();
  std::optional<Error> refusal;
  if (!context_->flags().isConfigured) {
    refusal = VantoriumError::notConfigured();
  } else if (!html) {
    refusal = VantoriumError::noPrecachedDataToShow(templateIsMissing);
  } else {
    refusal = refusalToShow();
  }
  if (refusal) {
    completion(false, refusal);
    return;
  }
  const auto mark = beginShowing(std::nullopt);
  client()->httpClient->getRewardableOffer(
      forPlacement, [mark, self = shared_from_this(), forPlacement, html, completion = std::move(completion),
                     serverParameter = std::move(serverParameter)](
                        const std::shared_ptr<RewardableOffer>& offer, const std::optional<Error>& error) {
        if (!offer) {
          if (error) self->context_->logError(error->errorMessage());
          mark->clear();
          self->context_->onMain([completion, error] { completion(false, error); });
          return;
        }
        const auto popup = RewardablePopupController(self->context_, self->client()->cacheClient.files, offer)
                               .prepare(forPlacement, *html);
        if (!popup) {
          mark->clear();
          self->context_->onMain([completion, flaw = popup.error()] { completion(false, flaw); });
          return;
        }
        self->context_->onMain([self, mark, forPlacement, popup = *popup, serverParameter, completion] {
          self->showPreparedPopup(mark, forPlacement, popup, serverParameter, completion);
        });
      });
}

void Sdk::showPreparedPopup(const std::shared_ptr<FlagMark>& mark, const std::string& placement,
                            const PreparedPopup& popup,
                            const std::optional<VantoriumServerParameter>& serverParameter,
                            const Completion& completion) {
  if (hasEnded_) {
    mark->clear();
    completion(false, shutDownWhileShowing());
    return;
  }
  show(mark, std::make_shared<RewardablePopupVC>(context_, client()->httpClient, placement, popup),
       serverParameter, completion);
}

void Sdk::precacheRewardablePopupTemplate(std::shared_ptr<DispatchQueue> queue, Completion completion) {
  const auto complete = [context = context_, queue = std::move(queue), completion = std::move(completion)](
                            bool success, const std::optional<Error>& error) {
    context->onQueue(queue, [completion, success, error] { completion(success, error); });
  };
  if (!context_->flags().isConfigured) return complete(false, VantoriumError::notConfigured());
  const auto services = client();
  const auto inventory = services->cacheClient.inventory;
  if (inventory->rewardablePopup()) return complete(true, std::nullopt);
  services->httpClient->getRewardablePopup(
      [inventory, complete](const std::optional<std::string>& text, const std::optional<Error>& error) {
        if (text) inventory->setRewardablePopup(text);
        complete(text.has_value(), error);
      });
}

}  // namespace vantorium
