// The video of the campaign screen: player, countdowns, skip and mute.

#include <cmath>

#include "screens/campaign_vc.hpp"

namespace vantorium {

namespace {

constexpr double videoTickInterval = 0.2;  // seconds
constexpr double skipDelay = 5.0;          // seconds of playback

}  // namespace

void CampaignVC::makePlayer() {
  if (creative_->film) {
    player_ = context().host().makePlayer(creative_->film->path());
    player_->seek(0);
    // The player is this screen's own and hears `setHandlers({})` before the screen goes; but what a handler
    // brings about may release the screen, so each holds it while it runs.
    const auto held = [this](auto action) {
      return [this, action] {
        const auto self = shared_from_this();
        (this->*action)();
      };
    };
    MediaPlayer::Handlers handlers;
    handlers.didPlayToEnd = held(&CampaignVC::videoDidEnd);
    handlers.didFailToPlayToEnd = held(&CampaignVC::videoDidEnd);
    handlers.presentationSizeDidChange = held(&CampaignVC::updateVideoGravity);
    handlers.didFail = held(&CampaignVC::playerDidFail);
    handlers.periodicTime = [this](double seconds) { videoTick(seconds); };
    handlers.tickInterval = videoTickInterval;
    player_->setHandlers(std::move(handlers));
    player_->prepare();
  }
  playerLayer_ = std::make_shared<ui::PlayerLayer>(player_);
  outlets_.playerPlaceholder->addSublayer(playerLayer_);
}

void CampaignVC::showPlayer() {
  if (!player_) return;
  webView_->setAudible(false);
  outlets_.webControlsView->setHidden(true);
  outlets_.playerControlsView->setHidden(false);
  outlets_.playerPlaceholder->setHidden(false);
  outlets_.skipVideoTimerView->setHidden(false);
  outlets_.skipVideoButton->setHidden(true);
  outlets_.durationTimerView->setHidden(!isRewardedVideo());
  player_->seek(0);
  player_->play();
}

void CampaignVC::videoTick(double seconds) {
  const double total = player_->duration();
  if (!(total > 0) || !(seconds > 0)) return;
  outlets_.durationTimerView->update(seconds / total, total);
  if (isRewardedVideo()) {
    outlets_.skipVideoTimerView->setHidden(true);
    outlets_.skipVideoButton->setHidden(true);
  } else if (seconds < skipDelay) {
    outlets_.skipVideoTimerView->update(seconds / skipDelay, skipDelay);
  } else {
    outlets_.skipVideoTimerView->setHidden(true);
    outlets_.skipVideoButton->setHidden(false);
  }
}

void CampaignVC::videoDidEnd() {
  isVideoOwed_ = false;
  reportFinished();
  rewardUserIfNeeded();
  showWebView();
}

void CampaignVC::playerDidFail() {
  if (const auto error = player_->error()) fail(*error);
}

void CampaignVC::skip() {
  if (!player_) return;
  isVideoSkipped_ = true;
  isVideoOwed_ = false;
  player_->pause();
  showWebView();
  reportFinished();
}

void CampaignVC::mute() {
  const bool muted = !outlets_.muteButton->isSelected();
  outlets_.muteButton->setSelected(muted);
  outlets_.muteButton->setAccessibilityLabel(muted ? "Unmute" : "Mute");
  if (player_) player_->setMuted(!player_->isMuted());
}

void CampaignVC::updateVideoGravity() {
  if (!player_ || !isViewLoaded()) return;
  const ui::Size video = player_->presentationSize();
  const ui::Rect frame = view().frame();
  const double videoRatio = video.width / video.height;
  const double viewRatio = frame.width / frame.height;
  const double angle = std::abs(view().transform().angle());
  const bool sameShape = (videoRatio < 1 && viewRatio < 1) || (videoRatio > 1 && viewRatio > 1);
  const bool isUpright = angle < 1.0 || angle > 3.0;
  playerLayer_->setVideoGravity(sameShape && isUpright ? ui::VideoGravity::resizeAspectFill
                                                       : ui::VideoGravity::resizeAspect);
}

}  // namespace vantorium
