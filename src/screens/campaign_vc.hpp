#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "cache/creative.hpp"
#include "platform/av/media_player.hpp"
#include "platform/ui/controls.hpp"
#include "platform/ui/store_product_view_controller.hpp"
#include "protocol/http_client.hpp"
#include "screens/base_view_controller.hpp"
#include "screens/countdown_views.hpp"
#include "screens/web_view.hpp"

namespace vantorium {

/// Shows one precached campaign and runs it to its end: a video, then its end card; or a playable page. The
/// page gives commands by navigating to "closead", "reportclick", "replay" and "reportfinished". Main thread
/// only.
class CampaignVC : public BaseViewController, public WebViewDelegate {
 public:
  /// Told how the report of the impression ended, on the thread on which it did: with success it is time to
  /// precache the placement's next campaign.
  using Replenish = std::function<void(const std::string& placementID, const std::optional<Error>& error)>;

  CampaignVC(std::shared_ptr<SdkContext> context, std::shared_ptr<HTTPClient> httpClient,
             std::string placementID, ReadyCampaign ready, Replenish replenish);
  ~CampaignVC() override;
  const char* className() const override { return "CampaignVC"; }

  bool webViewShouldStartLoad(WebView& view, const std::string& url, WebViewNavigationType type) override;
  void webViewDidFailLoad(WebView& /*view*/, const Error& /*error*/) override {}
  bool handleBack() override;

 protected:
  std::shared_ptr<ui::View> loadView() override;
  void viewDidLoad() override;
  void viewDidLayoutSubviews() override;
  void viewDidTransition() override { updateVideoGravity(); }
  OrientationMask supportedOrientations() const override;
  void deviceOrientationDidChange() override;

 private:
  // What the interface file connects.
  struct Outlets {
    std::shared_ptr<ui::View> webViewPlaceholder, webControlsView, playerPlaceholder, playerControlsView;
    std::shared_ptr<ui::Button> closeWebViewButton, skipVideoButton, muteButton;
    std::shared_ptr<TimerView> closeWebViewTimerView, skipVideoTimerView, durationTimerView;
  };

  bool isPlayable() const;
  bool isRewardedVideo() const;

  // The video.
  void makePlayer();
  void showPlayer();
  void videoTick(double seconds);
  void videoDidEnd();
  void playerDidFail();
  void updateVideoGravity();
  void skip();
  void mute();

  // The page.
  void preloadWebView();
  void showWebView();
  void startCloseCountdown();
  void closeButtonTimerHandler();
  void showCloseButtonIfNeeded();
  double closeCountdownLength() const;
  void close() { end(true, std::nullopt); }

  // What the page and the user bring about.
  void reportClick();
  void presentStoreSheet();
  void reportFinished();
  void rewardUserIfNeeded();
  void reportStart();

  void observeApplication();
  void applicationDidEnterBackground();
  void applicationWillEnterForeground();

  const std::shared_ptr<HTTPClient> httpClient_;
  const std::string placementID_;
  const Replenish replenish_;
  const std::shared_ptr<Campaign> campaign_;
  const std::shared_ptr<const Creative> creative_;
  const std::shared_ptr<ui::StoreProductViewController> storeProductViewController_;

  Outlets outlets_;
  std::shared_ptr<WebView> webView_;
  std::shared_ptr<MediaPlayer> player_;
  std::shared_ptr<ui::PlayerLayer> playerLayer_;
  std::optional<double> playerPauseTime_;
  bool isVideoSkipped_ = false;
  bool isVideoOwed_ = true;  ///< neither seen to its end nor skipped once
  std::unique_ptr<Timer> closeButtonTimer_;
  double closeButtonCounter_ = 0;
  std::shared_ptr<ui::Application::Observation> backgroundObservation_, foregroundObservation_;
};

}  // namespace vantorium
