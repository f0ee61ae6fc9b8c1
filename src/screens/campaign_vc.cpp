#include "screens/campaign_vc.hpp"

#include <utility>

#include "platform/ui/interface_file.hpp"
#include "screens/reward_claim.hpp"

namespace vantorium {

CampaignVC::CampaignVC(std::shared_ptr<SdkContext> sdkContext, std::shared_ptr<HTTPClient> httpClient,
                       std::string placementID, ReadyCampaign ready, Replenish replenish)
    : BaseViewController(std::move(sdkContext)),
      httpClient_(std::move(httpClient)),
      placementID_(std::move(placementID)),
      replenish_(std::move(replenish)),
      campaign_(std::move(ready.campaign)),
      creative_(std::move(ready.creative)),
      storeProductViewController_(context().host().makeStoreProductViewController()) {
  storeProductViewController_->setFinishHandler([this] { close(); });
  storeProductViewController_->loadProduct(campaign_->storeAppID);
}

CampaignVC::~CampaignVC() {
  // Both may be held by others; neither may call back from here on.
  storeProductViewController_->setFinishHandler({});
  if (player_) player_->setHandlers({});
}

bool CampaignVC::isPlayable() const { return vantorium::isPlayable(campaign_->type); }

bool CampaignVC::isRewardedVideo() const { return campaign_->adUnitType == AdUnitType::rewardedVideo; }

std::shared_ptr<ui::View> CampaignVC::loadView() {
  ui::InterfaceConnections connections;
  const auto connect = [&connections](const char* name, auto& outlet) {
    connections.outlets[name] = [&outlet](std::shared_ptr<ui::View> view) {
      outlet =
          std::dynamic_pointer_cast<typename std::decay_t<decltype(outlet)>::element_type>(std::move(view));
    };
  };
  connect("webViewPlaceholder", outlets_.webViewPlaceholder);
  connect("webControlsView", outlets_.webControlsView);
  connect("closeWebViewButton", outlets_.closeWebViewButton);
  connect("closeWebViewTimerView", outlets_.closeWebViewTimerView);
  connect("playerPlaceholder", outlets_.playerPlaceholder);
  connect("playerControlsView", outlets_.playerControlsView);
  connect("skipVideoButton", outlets_.skipVideoButton);
  connect("skipVideoTimerView", outlets_.skipVideoTimerView);
  connect("durationTimerView", outlets_.durationTimerView);
  connect("muteButton", outlets_.muteButton);
  connections.actions = {
      {"skip", [this] { skip(); }}, {"mute", [this] { mute(); }}, {"close", [this] { close(); }}};
  connections.classes["TimerView"] = [] { return std::make_shared<TimerView>(); };
  return ui::loadInterface("CampaignVC", connections);
}

void CampaignVC::viewDidLoad() {
  BaseViewController::viewDidLoad();
  observeApplication();
  makePlayer();
  webView_ = WebView::make(context().host());
  const auto self = std::static_pointer_cast<CampaignVC>(shared_from_this());
  webView_->setDelegate(self);
  outlets_.webViewPlaceholder->addSubview(webView_);
  if (isPlayable()) {
    preloadWebView();
    showWebView();
  } else {
    showPlayer();
    // The end card loads while the video plays.
    context().onMain([weak = std::weak_ptr(self)] {
      if (const auto screen = weak.lock()) screen->preloadWebView();
    });
  }
  reportStart();
}

void CampaignVC::viewDidLayoutSubviews() {
  playerLayer_->setFrame(outlets_.playerPlaceholder->bounds());
  webView_->setFrame(outlets_.webViewPlaceholder->bounds());
}

OrientationMask CampaignVC::supportedOrientations() const {
  if (!isPlayable()) return OrientationMask::all;
  switch (campaign_->orientation) {
    case CampaignOrientation::landscape:
      return OrientationMask::landscape;
    case CampaignOrientation::portrait:
      return OrientationMask::portrait;
    case CampaignOrientation::any:
      break;
  }
  return OrientationMask::all;
}

void CampaignVC::deviceOrientationDidChange() {
  BaseViewController::deviceOrientationDidChange();
  updateVideoGravity();
}

void CampaignVC::reportStart() {
  // The screen may be gone when the answer comes; the placement is replenished all the same.
  httpClient_->reportImpression(
      campaign_->impressionID, [replenish = replenish_, placement = placementID_](
                                   bool, const std::optional<Error>& error) { replenish(placement, error); });
}

void CampaignVC::reportFinished() { httpClient_->reportFinished(campaign_->impressionID); }

void CampaignVC::rewardUserIfNeeded() {
  if (!context().delegate() || !isRewardedVideo() || campaign_->rewardMethod != RewardMethod::client) return;
  if (campaign_->isRewarded.exchange(true)) return;
  RewardClaim::start(sharedContext(), httpClient_, placementID_, campaign_->rewardAmount);
}

void CampaignVC::observeApplication() {
  const std::weak_ptr<ViewController> weak = weak_from_this();
  const auto observe = [&](ui::ApplicationEvent event, void (CampaignVC::*handler)()) {
    return application().observe(event, [weak, handler] {
      const auto self = std::static_pointer_cast<CampaignVC>(weak.lock());
      if (self) (*self.*handler)();
    });
  };
  backgroundObservation_ =
      observe(ui::ApplicationEvent::didEnterBackground, &CampaignVC::applicationDidEnterBackground);
  foregroundObservation_ =
      observe(ui::ApplicationEvent::willEnterForeground, &CampaignVC::applicationWillEnterForeground);
}

void CampaignVC::applicationDidEnterBackground() {
  if (isPlayable()) {
    closeButtonTimer_.reset();
  } else if (player_ && player_->isPlaying()) {
    player_->pause();
    playerPauseTime_ = player_->currentTime();
  }
}

void CampaignVC::applicationWillEnterForeground() {
  if (isPlayable()) {
    startCloseCountdown();
  } else if (player_ && playerPauseTime_ && !isVideoSkipped_) {
    player_->seek(*std::exchange(playerPauseTime_, std::nullopt), true);
    player_->play();
  }
}

bool CampaignVC::handleBack() {
  const auto shown = [](const ui::View& view) { return !view.isHidden(); };
  if (player_ && isVideoOwed_ && shown(*outlets_.playerPlaceholder)) {
    // A video that can be skipped is; a rewarded one is owed to its end, once.
    if (shown(*outlets_.skipVideoButton)) skip();
    return true;
  }
  if (!isPlayable() || shown(*outlets_.closeWebViewButton)) close();
  return true;
}

}  // namespace vantorium
