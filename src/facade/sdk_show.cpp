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

void stopShowing(SdkContext& context) {
  context.updateFlags([](SdkContext::Flags& flags) { flags.isShowingAds = false; });
}

void endShowingPlacement(SdkContext& context) {
  context.updateFlags([](SdkContext::Flags& flags) { flags.showingPlacement.reset(); });
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

void Sdk::beginShowing(std::optional<std::string> placement) {
  context_->updateFlags([&](SdkContext::Flags& flags) {
    flags.isShowingAds = true;
    if (placement) flags.showingPlacement = std::move(placement);
  });
}

/// There is nothing to show after all.
void Sdk::failToShow(const Error& error, const Completion& completion) {
  stopShowing(*context_);
  completion(false, error);
  context_->logError(error.errorMessage());
}

void Sdk::show(const std::shared_ptr<BaseViewController>& screen,
               std::optional<VantoriumServerParameter> serverParameter, Completion completion) {
  std::erase_if(shownScreens_, [](const auto& each) { return each.expired(); });
  shownScreens_.push_back(screen);
  screen->showOverScreen(std::move(serverParameter), [context = context_, completion = std::move(completion)](
                                                         bool success, const std::optional<Error>& error) {
    stopShowing(*context);
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
  beginShowing(forPlacement);
  auto ready = services()->precacher->takeCampaign(forPlacement);
  if (ready) {
    showReady(forPlacement, std::move(*ready), std::move(serverParameter), std::move(completion));
  } else {
    endShowingPlacement(*context_);
    failToShow(VantoriumError::noPrecachedDataToShow(), completion);
  }
}

void Sdk::showReady(const std::string& placement, ReadyCampaign ready,
                    std::optional<VantoriumServerParameter> serverParameter, Completion completion) {
  Completion ended = [context = context_, files = client()->cacheClient.files, creative = ready.creative,
                      completion = std::move(completion)](bool success, const std::optional<Error>& error) {
    endShowingPlacement(*context);
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
  show(std::make_shared<CampaignVC>(context_, client()->httpClient, placement, std::move(ready), replenish),
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
  beginShowing(std::nullopt);
  show(std::make_shared<OfferWallVC>(context_, services()->widgetURL, forPlacement, *user),
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
  beginShowing(std::nullopt);
  const auto mark = std::make_shared<FlagMark>(context_, &SdkContext::Flags::isShowingAds);
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
          mark->release();
          self->showPreparedPopup(forPlacement, popup, serverParameter, completion);
        });
      });
}

void Sdk::showPreparedPopup(const std::string& placement, const PreparedPopup& popup,
                            const std::optional<VantoriumServerParameter>& serverParameter,
                            const Completion& completion) {
  if (hasEnded_) {
    stopShowing(*context_);
    completion(false, shutDownWhileShowing());
    return;
  }
  show(std::make_shared<RewardablePopupVC>(context_, client()->httpClient, placement, popup), serverParameter,
       completion);
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
        inventory->setRewardablePopup(text);
        complete(text.has_value(), error);
      });
}

}  // namespace vantorium
