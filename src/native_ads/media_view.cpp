#include "native_ads/media_view.hpp"

#include <algorithm>
#include <utility>

#include "model/kinds.hpp"
#include "native_ads/image_loading.hpp"
#include "platform/foundation/url.hpp"
#include "platform/ui/window.hpp"

namespace vantorium {

namespace {

constexpr Seconds visibilityInterval{0.1};
constexpr double muteIconSide = 24, muteIconMargin = 5;  // points

std::shared_ptr<VantoriumNativeAdAsset> firstOfType(const VantoriumNativeAd& ad, AssetType type) {
  const auto found =
      std::ranges::find_if(ad.assets, [type](const auto& asset) { return assetType(asset->type) == type; });
  return found == ad.assets.end() ? nullptr : *found;
}

/// What a player can be given: the saved file, else an address on the network. Others could lead into this
/// machine.
std::optional<std::string> playableSource(const VantoriumNativeAdAsset& asset) {
  if (asset.filePath) return asset.filePath;
  const auto url = URL::parse(asset.URL);
  const bool isRemote = url && (url->scheme() == "http" || url->scheme() == "https");
  return isRemote ? std::optional(asset.URL) : std::nullopt;
}

}  // namespace

std::shared_ptr<VantoriumMediaView> VantoriumMediaView::make(Host& host, ui::Rect frame) {
  std::shared_ptr<VantoriumMediaView> view(new VantoriumMediaView(host, frame));
  view->setUp();
  return view;
}

VantoriumMediaView::~VantoriumMediaView() {
  if (player_) player_->setHandlers({});
}

void VantoriumMediaView::setUp() {
  setBackgroundColor(ui::Color::black());
  playerLayer_ = std::make_shared<ui::PlayerLayer>(nullptr);
  playerLayer_->setVideoGravity(ui::VideoGravity::resizeAspectFill);
  playerLayer_->setHidden(true);
  addSublayer(playerLayer_);

  muteImageView_ = std::make_shared<ui::ImageView>();
  muteImageView_->setImage(ui::Image::named("sound_on_tablet"));
  muteImageView_->setHighlightedImage(ui::Image::named("sound_off_tablet"));
  muteImageView_->setHidden(true);
  addSubview(muteImageView_);

  muteButton_ = std::make_shared<ui::Button>();
  muteButton_->setAction([this] { muteClick(); });
  muteButton_->setAccessibilityLabel("Mute video");
  muteButton_->setHidden(true);
  addSubview(muteButton_);

  imageView_ = std::make_shared<ui::ImageView>();
  imageView_->setBackgroundColor(ui::Color::black());
  imageView_->setClipsToBounds(true);
  imageView_->setContentMode(ui::ContentMode::scaleAspectFill);
  addSubview(imageView_);
}

void VantoriumMediaView::updateUI(const VantoriumNativeAd& ad) {
  dropVideo();
  if (const auto video = firstOfType(ad, AssetType::video)) {
    if (const auto source = playableSource(*video)) showVideo(*source);
  } else if (const auto image = firstOfType(ad, AssetType::image)) {
    showPicture(*image);
  }
  updateTimer();
}

void VantoriumMediaView::dropVideo() {
  if (!player_) return;
  player_->setHandlers({});
  player_->pause();
  playerLayer_->setPlayer(nullptr);
  player_.reset();
}

void VantoriumMediaView::showVideo(const std::string& source) {
  showImage(*imageView_, nullptr);
  imageView_->setHidden(true);
  muteButton_->setHidden(false);
  muteImageView_->setHidden(false);
  playerLayer_->setHidden(false);

  hasEnded_ = brokeOff_ = false;
  player_ = host_.makePlayer(source);
  MediaPlayer::Handlers handlers;
  handlers.didPlayToEnd = [this, loops = options.shouldLoopVideo] { videoDidEnd(loops); };
  handlers.didFailToPlayToEnd = [this] { brokeOff_ = true; };
  player_->setHandlers(std::move(handlers));
  setMuted(options.shouldMuteVideo);
  playerLayer_->setPlayer(player_);
  player_->seek(0);
  reportVideoStartedIfNeeded();
}

void VantoriumMediaView::showPicture(const VantoriumNativeAdAsset& asset) {
  if (asset.filePath) {
    showImage(*imageView_, savedPicture(asset));
  } else {
    setImage(imageView_, asset.URL, services_);
  }
  playerLayer_->setHidden(true);
  muteButton_->setHidden(true);
  muteImageView_->setHidden(true);
  imageView_->setHidden(false);
}

void VantoriumMediaView::play() {
  hasEnded_ = brokeOff_ = false;
  if (player_) player_->play();
  updateTimer();
}

void VantoriumMediaView::pause() {
  if (player_) player_->pause();
}

void VantoriumMediaView::muteClick() { setMuted(!isMuted_); }

void VantoriumMediaView::setMuted(bool muted) {
  isMuted_ = muted;
  muteImageView_->setHighlighted(muted);
  muteButton_->setAccessibilityLabel(muted ? "Unmute video" : "Mute video");
  if (player_) player_->setMuted(muted);
}

void VantoriumMediaView::videoDidEnd(bool loops) {
  if (!loops) {
    hasEnded_ = true;
    return;
  }
  reportVideoEndedIfNeeded();
  player_->seek(0);
  player_->play();
}

bool VantoriumMediaView::isOnScreen() const {
  if (window() == nullptr) return false;
  for (const View* each = this; each != nullptr; each = each->superview()) {
    if (each->isHidden()) return false;
  }
  return ui::intersects(frameInWindow(), window()->bounds());
}

void VantoriumMediaView::updatePlayer() {
  const bool wasSeen = std::exchange(isSeen_, isOnScreen());
  if (isSeen_ && !wasSeen) brokeOff_ = false;
  if (player_ && isSeen_) player_->prepare();
  if (isSeen_ && options.shouldAutoplayVideo) {
    const bool canPlay = player_ && !hasEnded_ && !brokeOff_ && !player_->error();
    if (canPlay && !player_->isPlaying()) player_->play();
    reportVideoStartedIfNeeded();  // the service wants it of any medium that is seen
  } else if (player_ && player_->isPlaying()) {
    player_->pause();
  }
}

void VantoriumMediaView::didMoveToWindow() {
  View::didMoveToWindow();
  updateTimer();
}

/// There is something to look after while a video plays, or could, or its start is owed a report.
void VantoriumMediaView::updateTimer() {
  const bool isOwed = nativeAd && !nativeAd->isVideoStartReported && options.shouldAutoplayVideo;
  const bool isNeeded =
      window() != nullptr ? player_ || isOwed : isSeen_ || (player_ && player_->isPlaying());
  if (!isNeeded) {
    timer_.reset();
  } else if (!timer_) {
    timer_ = host_.clock().schedule(visibilityInterval, true, [this] { timerHandler(); });
  }
}

void VantoriumMediaView::timerHandler() {
  updatePlayer();
  updateTimer();
}

void VantoriumMediaView::reportVideoStartedIfNeeded() {
  if (!nativeAd || std::exchange(nativeAd->isVideoStartReported, true)) return;
  if (const auto reports = services_.reports()) reports->reportVideoStarted(nativeAd->impressionID);
}

void VantoriumMediaView::reportVideoEndedIfNeeded() {
  if (!nativeAd || std::exchange(nativeAd->isVideoEndReported, true)) return;
  if (const auto reports = services_.reports()) reports->reportFinished(nativeAd->impressionID);
}

void VantoriumMediaView::layoutSubviews() {
  View::layoutSubviews();
  const ui::Rect all = bounds();
  imageView_->setFrame(all);
  playerLayer_->setFrame(all);
  muteButton_->setFrame(all);
  muteImageView_->setFrame({all.width - muteIconSide - muteIconMargin,
                            all.height - muteIconSide - muteIconMargin, muteIconSide, muteIconSide});
}

}  // namespace vantorium
