#pragma once

#include <memory>
#include <string>

#include <vantorium/export.h>
#include <vantorium/options.hpp>

#include "model/native_ad.hpp"
#include "native_ads/ad_services.hpp"
#include "platform/av/media_player.hpp"
#include "platform/foundation/clock.hpp"
#include "platform/host.hpp"
#include "platform/ui/controls.hpp"
#include "platform/ui/layer.hpp"

namespace vantorium {

/// A native ad's main medium: its video, which plays while some part of the view is on screen and is muted by
/// a tap; or else its image. Start and end of the video are reported once per ad. Main thread only; the host
/// outlives the view.
class VANTORIUM_HOST_API VantoriumMediaView : public ui::View {
 public:
  static std::shared_ptr<VantoriumMediaView> make(Host& host, ui::Rect frame = {});
  ~VantoriumMediaView() override;
  const char* className() const override { return "VantoriumMediaView"; }

  /// The ad shown; null for none.
  std::shared_ptr<VantoriumNativeAd> nativeAd;
  /// Taken into account when the view is filled, autoplay at any time.
  VantoriumMediaViewOptions options;
  /// Whom to report to, and to load pictures by; until it is set nothing is reported or loaded.
  void setServices(AdServices services) { services_ = std::move(services); }

  /// Shows the ad in place of what was shown. An ad without video and image leaves what was there, but for a
  /// video.
  void updateUI(const VantoriumNativeAd& ad);
  /// Play or pause the video. With autoplay, and out of sight, what the view sees decides again within 0.1 s.
  void play();
  void pause();
  void muteClick();

  void didMoveToWindow() override;
  void layoutSubviews() override;

 private:
  VantoriumMediaView(Host& host, ui::Rect frame) : View(frame), host_(host) {}
  void setUp();
  void dropVideo();
  void showVideo(const std::string& source);
  void showPicture(const VantoriumNativeAdAsset& asset);
  void setMuted(bool muted);
  bool isOnScreen() const;
  void updatePlayer();
  void updateTimer();
  void timerHandler();
  void videoDidEnd(bool loops);
  void reportVideoStartedIfNeeded();
  void reportVideoEndedIfNeeded();

  Host& host_;
  AdServices services_;
  std::shared_ptr<MediaPlayer> player_;  ///< null while there is no video
  std::shared_ptr<ui::PlayerLayer> playerLayer_;
  std::shared_ptr<ui::ImageView> imageView_, muteImageView_;
  std::shared_ptr<ui::Button> muteButton_;
  bool isMuted_ = false;
  bool isSeen_ = false;    ///< at the last look
  bool hasEnded_ = false;  ///< the video has come to its end, and does not start again by itself
  bool brokeOff_ = false;  ///< it could not go on; worth another try when it comes into sight again
  std::unique_ptr<Timer> timer_;
};

}  // namespace vantorium
