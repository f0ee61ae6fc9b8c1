#include <gtest/gtest.h>

#include <numbers>

#include "support/sdk_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using testing::SdkWorld;

struct PlayableScreen : ::testing::Test {
  static constexpr const char* rewarded = "playable-rewarded";  // landscape, 50 coins
  static constexpr const char* portrait = "playable-portrait";  // no reward
  static constexpr const char* plain = "html-plain";            // any way up

  SdkWorld world;
  headless::Host& host() { return *world.host; }
  void tick(int times = 1) {
    for (; times > 0; --times) host().loop().advance(Seconds{0.2});
  }
  bool isClosable() { return !world.isHidden("closeWebViewButton"); }
  std::size_t asked() const { return world.requests("/api/canReward/"); }
};

TEST_F(PlayableScreen, CountsDownToItsCloseControl) {
  for (const auto& [placement, ticks] : std::map<std::string, int>{{portrait, 25}, {rewarded, 151}}) {
    world.lines.clear();
    ASSERT_TRUE(world.showing(placement));
    EXPECT_TRUE(world.isHidden("playerPlaceholder"));
    EXPECT_FALSE(world.isHidden("webControlsView"));
    EXPECT_FALSE(world.isHidden("closeWebViewTimerView"));
    EXPECT_TRUE(host().snapshot()["web"]["url"].get<std::string>().ends_with("/index.html"));
    tick(ticks - 1);
    EXPECT_FALSE(isClosable()) << placement;
    EXPECT_NEAR(world.view("closeWebViewTimerView")["progress"], (ticks - 1) / (ticks == 25 ? 25.0 : 150.0),
                1e-9);
    host().tap("back");
    EXPECT_FALSE(world.has("show true")) << "not yet";
    tick();
    EXPECT_TRUE(isClosable()) << placement;
    EXPECT_TRUE(world.isHidden("closeWebViewTimerView"));
    EXPECT_FALSE(host().tap("closeWebViewButton"));
    EXPECT_TRUE(world.await("show true"));
    EXPECT_TRUE(host().snapshot().is_null());
  }
  ASSERT_TRUE(world.awaitEvents("impression", 2));
  EXPECT_EQ(world.events("finished"), 0U);
  EXPECT_EQ(asked(), 0U);
}

TEST_F(PlayableScreen, TimeInTheBackgroundDoesNotCount) {
  ASSERT_TRUE(world.showing(portrait));
  tick(10);
  host().headlessApplication().enterBackground();
  tick(1000);
  EXPECT_FALSE(isClosable());
  host().headlessApplication().enterForeground();
  tick(14);
  EXPECT_FALSE(isClosable());
  tick();
  EXPECT_TRUE(isClosable());
  host().headlessApplication().enterBackground();
  host().headlessApplication().enterForeground();
  tick(2);
  EXPECT_TRUE(isClosable());
  EXPECT_TRUE(world.isHidden("closeWebViewTimerView"));
  host().tap("back");
  EXPECT_EQ(world.count("show true"), 1);
}

TEST_F(PlayableScreen, FinishingGivesTheCloseControlAndTheRewardOnce) {
  ASSERT_TRUE(world.showing(rewarded));
  tick(3);
  host().navigate("reportfinished://harbor-dash");
  EXPECT_TRUE(isClosable());
  EXPECT_TRUE(world.isHidden("closeWebViewTimerView"));
  ASSERT_TRUE(world.await("didReceiveReward playable-rewarded 50"));
  host().navigate("reportfinished://harbor-dash");
  ASSERT_TRUE(world.awaitEvents("finished", 2));
  tick(200);
  EXPECT_TRUE(isClosable());
  host().navigate("reportclick://store");
  EXPECT_EQ(world.lines.back(), "didReceiveClick playable-rewarded");
  host().finishStore();
  EXPECT_EQ(world.count("show true"), 1);
  EXPECT_EQ(asked(), 1U);
  EXPECT_EQ(world.count("didReceiveReward playable-rewarded 50"), 1);
  host().loop().advance(Seconds{60});  // no countdown outlives its screen

  ASSERT_TRUE(world.showing(portrait));
  host().navigate("reportfinished://harbor-dash");
  EXPECT_TRUE(isClosable());
  host().navigate("closead://done");
  EXPECT_EQ(world.count("show true"), 2);
  ASSERT_TRUE(world.awaitEvents("finished", 3));
  EXPECT_EQ(asked(), 1U) << "it pays nothing";
}

TEST_F(PlayableScreen, OlderEngineResolvesThePagesReferencesInItsFolder) {
  host().deviceFacts().set("systemVersion", "8.4");
  ASSERT_TRUE(world.showing(rewarded));
  const json load = host().awaitEvent({{"event", "load"}, {"kind", "html"}});
  const std::string base = load["base"];
  EXPECT_TRUE(base.starts_with("file:///") && base.ends_with("/")) << base;
}

TEST_F(PlayableScreen, TurnsAsItsCampaignAsks) {
  constexpr double quarter = std::numbers::pi / 2;
  using ui::DeviceOrientation;
  const auto turned = [this](DeviceOrientation orientation) {
    host().headlessApplication().setDeviceOrientation(orientation);
    return host().snapshot()["rotation"].get<double>();
  };
  host().headlessApplication().setDeviceOrientation(DeviceOrientation::faceUp);
  ASSERT_TRUE(world.showing(rewarded));
  EXPECT_DOUBLE_EQ(host().snapshot()["rotation"], -quarter) << "landscape right until another is seen";
  EXPECT_EQ(world.view("webViewPlaceholder")["frame"], json({0.0, 0.0, 844.0, 390.0}));
  EXPECT_DOUBLE_EQ(turned(DeviceOrientation::landscapeLeft), quarter);
  EXPECT_DOUBLE_EQ(turned(DeviceOrientation::portrait), quarter) << "the last landscape is kept";
  EXPECT_DOUBLE_EQ(turned(DeviceOrientation::landscapeRight), -quarter);
  host().navigate("closead://x");

  ASSERT_TRUE(world.showing(portrait));
  EXPECT_DOUBLE_EQ(host().snapshot()["rotation"], 0.0) << "although the device lies on its side";
  host().navigate("closead://x");

  ASSERT_TRUE(world.showing(plain));
  EXPECT_DOUBLE_EQ(host().snapshot()["rotation"], -quarter);
  EXPECT_DOUBLE_EQ(turned(DeviceOrientation::portraitUpsideDown), 2 * quarter);
}

}  // namespace
}  // namespace vantorium
