// The page of the campaign screen: end card or playable, its commands and its close countdown.

#include "platform/foundation/url.hpp"
#include "screens/campaign_vc.hpp"

namespace vantorium {

namespace {

constexpr double closeCountdown = 5.0;           // seconds
constexpr double rewardedCloseCountdown = 30.0;  // seconds
constexpr double closeCountdownTick = 0.2;       // seconds

}  // namespace

void CampaignVC::preloadWebView() {
  if (!creative_->page) return;
  if (const auto error = webView_->loadFileURL(*creative_->page, creative_->folder->path())) fail(*error);
}

void CampaignVC::showWebView() {
  webView_->setAudible(true);
  outlets_.playerControlsView->setHidden(true);
  outlets_.playerPlaceholder->setHidden(true);
  outlets_.webControlsView->setHidden(!isPlayable());
  if (!isPlayable()) return;
  closeButtonCounter_ = closeCountdownLength();
  outlets_.closeWebViewButton->setHidden(true);
  outlets_.closeWebViewTimerView->setHidden(false);
  startCloseCountdown();
}

double CampaignVC::closeCountdownLength() const {
  return isRewardedVideo() ? rewardedCloseCountdown : closeCountdown;
}

void CampaignVC::startCloseCountdown() {
  closeButtonTimer_ =
      context().host().clock().schedule(Seconds{closeCountdownTick}, true, [weak = weak_from_this()] {
        if (const auto self = std::static_pointer_cast<CampaignVC>(weak.lock()))
          self->closeButtonTimerHandler();
      });
}

void CampaignVC::closeButtonTimerHandler() {
  closeButtonCounter_ -= closeCountdownTick;
  if (closeButtonCounter_ <= 0) {
    closeButtonTimer_.reset();
    outlets_.closeWebViewButton->setHidden(false);
    outlets_.closeWebViewTimerView->setHidden(true);
  }
  const double length = closeCountdownLength();
  outlets_.closeWebViewTimerView->update((length - closeButtonCounter_) / length, length);
}

void CampaignVC::showCloseButtonIfNeeded() {
  if (!isPlayable()) return;
  outlets_.closeWebViewButton->setHidden(false);
  outlets_.closeWebViewTimerView->setHidden(true);
  closeButtonTimer_.reset();
}

bool CampaignVC::webViewShouldStartLoad(WebView& /*view*/, const std::string& url,
                                        WebViewNavigationType /*type*/) {
  const std::string command = commandOf(url);
  if (command == "itms-appss") return false;
  if (command == "closead") {
    close();
  } else if (command == "reportclick") {
    reportClick();
    presentStoreSheet();
  } else if (command == "replay") {
    showPlayer();
  } else if (command == "reportfinished") {
    reportFinished();
    rewardUserIfNeeded();
    showCloseButtonIfNeeded();
  }
  return true;
}

void CampaignVC::reportClick() {
  if (!URL::parse(campaign_->preparedTrackingURL)) return;
  webView_->loadRequest(campaign_->preparedTrackingURL);
  const auto& parameter = serverParameter();
  httpClient_->reportClick(campaign_->impressionID, parameter ? parameter->parameters : std::nullopt);
  const auto delegate = context().delegate();
  if (delegate && delegate->respondsTo(DelegateMethod::didReceiveClick))
    delegate->didReceiveClick(placementID_);
}

void CampaignVC::presentStoreSheet() {
  if (!hasEnded()) present(storeProductViewController_, true);
}

}  // namespace vantorium
