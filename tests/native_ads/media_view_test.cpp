#include <gtest/gtest.h>

#include "support/native_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using testing::NativeWorld;

std::shared_ptr<VantoriumMediaViewOptions> mediaOptions(bool autoplay, bool loop, bool mute) {
  const auto options = std::make_shared<VantoriumMediaViewOptions>();
  options->shouldAutoplayVideo = autoplay;
  options->shouldLoopVideo = loop;
  options->shouldMuteVideo = mute;
  return options;
}

class MediaViewTest : public ::testing::Test {
 protected:
  std::shared_ptr<VantoriumNativeAd> video() { return world_.fetch("native-video")[0]; }
  std::shared_ptr<VantoriumNativeAdView> show(const std::shared_ptr<VantoriumNativeAd>& ad,
                                              bool autoplay = true, bool loop = true, bool mute = false) {
    return world_.show(ad, {mediaOptions(autoplay, loop, mute)});
  }
  static std::shared_ptr<ui::ImageView> part(const VantoriumNativeAdView& view, std::size_t index) {
    return std::dynamic_pointer_cast<ui::ImageView>(view.outlets.mediaView.lock()->subviews().at(index));
  }
  /// Whether the video plays a tenth of a second from now.
  bool playsSoon(const VantoriumNativeAdView& view) {
    world_.host->advance(0.1);
    return world_.playerOf(view)->isPlaying();
  }

  NativeWorld world_;
};

TEST_F(MediaViewTest, PlaysWhileSomePartIsOnScreen) {
  const auto view = show(video());
  EXPECT_FALSE(world_.playerOf(*view)->isPlaying()) << "filling alone starts nothing";
  EXPECT_TRUE(playsSoon(*view));
  const ui::Rect window = view->window()->bounds();
  const auto media = view->outlets.mediaView.lock();
  const double height = media->frame().height;
  for (const auto& [y, plays] : std::vector<std::pair<double, bool>>{{-height + 1, true},
                                                                     {-height, false},
                                                                     {window.height - 1, true},
                                                                     {window.height, false},
                                                                     {0, true}}) {
    view->setFrame({0, y, 300, 400});
    EXPECT_EQ(playsSoon(*view), plays) << y;
  }
  view->setHidden(true);
  EXPECT_FALSE(playsSoon(*view));
  view->setHidden(false);
  EXPECT_TRUE(playsSoon(*view));
  view->removeFromSuperview();
  EXPECT_FALSE(playsSoon(*view));
  world_.putInWindow(view);
  EXPECT_TRUE(playsSoon(*view));
}

TEST_F(MediaViewTest, WithoutAutoplayThePlayerIsKeptPaused) {
  const auto view = show(video(), false);
  EXPECT_FALSE(playsSoon(*view));
  const auto media = view->outlets.mediaView.lock();
  media->play();
  EXPECT_TRUE(world_.playerOf(*view)->isPlaying());
  EXPECT_FALSE(playsSoon(*view)) << "until the next look";
  view->removeFromSuperview();
  media->play();
  EXPECT_FALSE(playsSoon(*view)) << "out of sight too";
}

TEST_F(MediaViewTest, LoopsAndReportsStartAndEndOnce) {
  const auto ad = video();
  const auto view = show(ad), other = show(ad);
  EXPECT_TRUE(playsSoon(*view));
  for (const auto& shown : {view, other, view}) {
    const auto player = world_.playerOf(*shown);
    player->moveTo(7.9, 8);
    player->playToEnd();
    EXPECT_EQ(player->currentTime(), 0);
    EXPECT_TRUE(player->isPlaying());
  }
  world_.populate(view, ad);
  view->didTapCTAButton();
  for (const char* kind : {"started", "finished", "click"}) ASSERT_TRUE(world_.awaitEvents(kind)) << kind;
  EXPECT_EQ(world_.events("started"), 1U);
  EXPECT_EQ(world_.events("finished"), 1U);
}

TEST_F(MediaViewTest, WithoutLoopingTheEndIsTheEnd) {
  const auto ad = video();
  const auto view = show(ad, true, false);
  EXPECT_TRUE(playsSoon(*view));
  world_.playerOf(*view)->playToEnd();
  EXPECT_FALSE(playsSoon(*view));
  view->removeFromSuperview();
  EXPECT_FALSE(playsSoon(*view));
  world_.putInWindow(view);
  EXPECT_FALSE(playsSoon(*view)) << "it does not begin again by itself";
  view->outlets.mediaView.lock()->play();
  EXPECT_TRUE(playsSoon(*view)) << "but when it is asked to";
  EXPECT_FALSE(ad->isVideoEndReported);
}

TEST_F(MediaViewTest, VideoThatCannotPlayIsLeftAlone) {
  const auto view = show(video());
  EXPECT_TRUE(playsSoon(*view));
  world_.playerOf(*view)->failToPlayToEnd();
  EXPECT_FALSE(playsSoon(*view)) << "no tries at every look";
  view->outlets.mediaView.lock()->setHidden(true);
  EXPECT_FALSE(playsSoon(*view));
  view->outlets.mediaView.lock()->setHidden(false);
  EXPECT_TRUE(playsSoon(*view)) << "but one when it comes into sight again";
  world_.playerOf(*view)->fail(Error::platform("script", 1, "broken"));
  EXPECT_FALSE(playsSoon(*view));
  EXPECT_TRUE(part(*view, 2)->isHidden()) << "the picture does not stand in";
}

TEST_F(MediaViewTest, MutesByATapAnywhere) {
  const auto view = show(video(), true, true, true);
  const auto player = world_.playerOf(*view);
  const auto icon = part(*view, 0);
  EXPECT_TRUE(player->isMuted());
  EXPECT_EQ(icon->image()->name(), "sound_off_tablet");
  view->layoutIfNeeded();
  const auto media = view->outlets.mediaView.lock();
  EXPECT_EQ(icon->frame(), (ui::Rect{300 - 29, 169 - 29, 24, 24}));
  EXPECT_EQ(media->subviews().at(1)->frame(), media->bounds());
  media->subviews().at(1)->handleTap();
  EXPECT_FALSE(player->isMuted());
  EXPECT_EQ(icon->image()->name(), "sound_on_tablet");
}

TEST_F(MediaViewTest, ShowsThePictureOfAnAdWithoutVideo) {
  const auto ad = world_.fetch("native-images")[0];
  const auto view = show(video());
  const auto player = world_.playerOf(*view);
  world_.populate(view, ad);
  EXPECT_FALSE(player->isPlaying());
  EXPECT_EQ(world_.playerOf(*view), nullptr);
  const auto picture = part(*view, 2);
  EXPECT_EQ(picture->image()->name(), ad->assets[0]->filePath) << "the first one";
  EXPECT_FALSE(picture->isHidden());
  EXPECT_TRUE(part(*view, 0)->isHidden());

  world_.populate(view, world_.fetchAd(json{{"cta", "Go"}}));
  EXPECT_EQ(picture->image()->name(), ad->assets[0]->filePath) << "without a medium it stays as it was";
}

TEST_F(MediaViewTest, PlaysNothingFromThisMachine) {
  for (const char* url : {"file:///etc/passwd", "/etc/passwd", "", "not an address", "javascript:alert(1)"}) {
    const auto ad = world_.fetchAd(json{{"assets", {{{"type", "video"}, {"url", url}}}}}, false);
    ASSERT_NE(ad, nullptr);
    EXPECT_EQ(world_.playerOf(*show(ad)), nullptr) << url;
  }
}

TEST_F(MediaViewTest, NothingTicksWhileThereIsNothingToPlay) {
  const auto looks = [this] { return world_.host->loop().pendingTimers(); };
  const auto idle = looks();
  const auto view = show(video());
  EXPECT_EQ(looks(), idle + 1);
  ASSERT_TRUE(playsSoon(*view));
  view->removeFromSuperview();
  EXPECT_FALSE(playsSoon(*view));
  EXPECT_EQ(looks(), idle) << "out of sight";
  world_.putInWindow(view);
  EXPECT_EQ(looks(), idle + 1);
  world_.populate(view, world_.fetch("native-images")[0]);
  world_.host->advance(0.2);
  EXPECT_EQ(looks(), idle) << "nothing but a picture";
}

}  // namespace
}  // namespace vantorium
