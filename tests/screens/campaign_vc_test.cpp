#include <gtest/gtest.h>

#include <numbers>

#include "support/sdk_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using testing::SdkWorld;

struct CampaignScreen : ::testing::Test {
  SdkWorld world;
  headless::Host& host() { return *world.host; }
  std::size_t asked() const { return world.requests("/api/canReward/"); }
};

TEST_F(CampaignScreen, RewardedVideoRunsToItsRewardAndClick) {
  ASSERT_TRUE(world.showing(SdkWorld::rewarded));
  ASSERT_TRUE(world.awaitEvents("impression"));
  json snapshot = host().snapshot();
  EXPECT_EQ(snapshot["player"]["playing"], true);
  EXPECT_TRUE(snapshot["web"]["url"].get<std::string>().ends_with("/static/html/endcard.html"));
  EXPECT_EQ(snapshot["web"]["engine"], "newer");

  host().moveVideo(1.8, 6);
  EXPECT_EQ(world.view("durationTimerView")["text"], "5");
  EXPECT_DOUBLE_EQ(world.view("durationTimerView")["progress"], 0.3);
  EXPECT_TRUE(world.isHidden("skipVideoButton"));
  EXPECT_TRUE(world.isHidden("skipVideoTimerView"));
  EXPECT_EQ(host().tap("skipVideoButton"),
            "The control \"skipVideoButton\" is hidden. Expected one that is seen.");
  host().tap("back");
  EXPECT_FALSE(world.isHidden("playerPlaceholder")) << "a rewarded video is owed to its end";

  host().videoEvent("ended");
  EXPECT_TRUE(world.isHidden("playerPlaceholder"));
  EXPECT_TRUE(world.isHidden("webControlsView")) << "the end card brings its own controls";
  ASSERT_TRUE(world.await("didReceiveReward rewarded-main 50"));

  host().navigate("reportfinished://x");
  host().navigate("reportclick://x");
  EXPECT_EQ(world.lines.back(), "didReceiveClick rewarded-main");
  EXPECT_FALSE(
      host()
          .awaitEvent({{"event", "storeSheet"}, {"action", "present"}, {"product", "org.example.SkyHarbor"}})
          .is_null());
  EXPECT_FALSE(world.has("show true"));
  host().finishStore();
  EXPECT_EQ(world.count("show true"), 1);
  EXPECT_TRUE(host().snapshot().is_null());
  ASSERT_TRUE(world.awaitEvents("click"));
  ASSERT_TRUE(world.awaitEvents("finished", 2));
  EXPECT_EQ(world.events("impression"), 1U);
  EXPECT_EQ(asked(), 1U) << "a reward is asked for once";
  EXPECT_EQ(world.count("didReceiveReward rewarded-main 50"), 1);
}

TEST_F(CampaignScreen, NoRewardWithoutDelegateOrPermission) {
  world.server.setCanReward(SdkWorld::rewarded, "false");
  ASSERT_TRUE(world.showing(SdkWorld::rewarded));
  world.sdk->context()->setDelegate({});
  host().videoEvent("ended");
  EXPECT_EQ(asked(), 0U);
  world.sdk->context()->setDelegate(world.delegate);
  host().navigate("reportfinished://x");
  ASSERT_TRUE(world.server.waitForRequest(
      [](const json& request) { return request["target"] == "/api/canReward/rewarded-main"; }));
  ASSERT_TRUE(world.awaitEvents("finished", 2));
  host().navigate("closead://x");
  EXPECT_FALSE(world.has("didReceiveReward rewarded-main 50"));
}

TEST_F(CampaignScreen, InterstitialCanBeSkippedAfterFiveSeconds) {
  ASSERT_TRUE(world.showing(SdkWorld::interstitial));
  host().moveVideo(4.9, 20);
  EXPECT_EQ(world.view("skipVideoTimerView")["text"], "1");
  EXPECT_TRUE(world.isHidden("skipVideoButton"));
  EXPECT_TRUE(world.isHidden("durationTimerView"));
  host().moveVideo(5.0, 20);
  EXPECT_TRUE(world.isHidden("skipVideoTimerView"));
  EXPECT_FALSE(host().tap("skipVideoButton"));
  EXPECT_TRUE(world.isHidden("playerPlaceholder"));
  ASSERT_TRUE(world.awaitEvents("finished"));
  EXPECT_EQ(asked(), 0U);

  // The hidden player stays silent when the application comes back.
  host().headlessApplication().enterBackground();
  host().headlessApplication().enterForeground();
  EXPECT_EQ(host().snapshot()["player"]["playing"], false);

  host().navigate("replay://x");
  EXPECT_FALSE(world.isHidden("playerPlaceholder"));
  EXPECT_EQ(host().snapshot()["player"]["position"], 0);
  EXPECT_EQ(host().snapshot()["player"]["playing"], true);
  EXPECT_TRUE(world.isHidden("skipVideoButton"));
  host().tap("back");
  EXPECT_EQ(world.lines.back(), "show true") << "a video skipped once owes nothing when it is played again";
}

TEST_F(CampaignScreen, MuteAndBackgroundPause) {
  ASSERT_TRUE(world.showing(SdkWorld::rewarded));
  host().tap("muteButton");
  EXPECT_EQ(host().snapshot()["player"]["muted"], true);
  EXPECT_EQ(world.view("muteButton")["selected"], true);
  host().moveVideo(2.5, 6);
  host().headlessApplication().enterBackground();
  EXPECT_EQ(host().snapshot()["player"]["playing"], false);
  host().headlessApplication().enterForeground();
  EXPECT_EQ(host().snapshot()["player"]["playing"], true);
  EXPECT_EQ(host().snapshot()["player"]["position"], 2.5);
  host().videoEvent("ended");
  host().headlessApplication().enterBackground();
  host().headlessApplication().enterForeground();
  EXPECT_EQ(host().snapshot()["player"]["playing"], false) << "the end card has the screen";
}

TEST_F(CampaignScreen, PlayerFailureEndsTheAdOnce) {
  ASSERT_TRUE(world.showing(SdkWorld::rewarded));
  const auto player = host().frontPlayer();
  host().videoEvent("failed", "no decoder");
  EXPECT_EQ(world.lines.back(), "show false no decoder");
  const auto lines = world.lines;
  player->playToEnd();
  EXPECT_EQ(world.lines, lines) << "the screen is gone";
  EXPECT_TRUE(world.server.waitForRequest([](const json& request) {
    return request["target"] == "/api/logError" &&
           request["body"]["log"].get<std::string>().starts_with("no decoder");
  }));
}

TEST_F(CampaignScreen, CommandsAreWordsAndNothingElse) {
  ASSERT_TRUE(world.showing(SdkWorld::rewarded));
  host().videoEvent("ended");
  host().navigate("itms-appss://store");
  EXPECT_EQ(host().awaitEvent({{"event", "navigation"}, {"url", "itms-appss://store"}})["allowed"], false);
  for (const char* url :
       {"itms-apps://store", "https://closead.example/closead", "closeads://x", "about:blank", ""}) {
    host().navigate(url);
    EXPECT_EQ(host().awaitEvent({{"event", "navigation"}, {"url", url}})["allowed"], true) << url;
  }
  host().failPage("offline");
  EXPECT_FALSE(world.has("show true"));
  host().navigate("ReportClick:");
  host().navigate("closead:");  // with the store sheet in front, whose page is not the ad's
  EXPECT_FALSE(world.has("show true"));
  host().finishStore();
  EXPECT_EQ(world.count("show true"), 1);
}

TEST_F(CampaignScreen, OlderEngineThatCannotReadThePageEndsTheAd) {
  host().deviceFacts().set("systemVersion", "8.4");
  ASSERT_TRUE(world.configure());
  ASSERT_TRUE(world.precache(SdkWorld::rewarded));
  world.show(SdkWorld::rewarded);
  std::error_code ignored;
  std::filesystem::remove_all(host().directories().caches, ignored);
  host().loop().runPending();
  EXPECT_TRUE(world.lines.back().starts_with("show false "));
  EXPECT_TRUE(host().snapshot().is_null());
}

TEST_F(CampaignScreen, FollowsTheDeviceAndFitsTheVideo) {
  ASSERT_TRUE(world.showing(SdkWorld::rewarded));
  EXPECT_EQ(host().snapshot()["player"]["gravity"], "resizeAspect") << "nothing is known of the video yet";
  host().setVideoSize(540, 960);
  EXPECT_EQ(host().snapshot()["player"]["gravity"], "resizeAspectFill");
  host().headlessApplication().setDeviceOrientation(ui::DeviceOrientation::landscapeLeft);
  json snapshot = host().snapshot();
  EXPECT_DOUBLE_EQ(snapshot["rotation"], std::numbers::pi / 2);
  EXPECT_EQ(snapshot["frame"], json({0.0, 0.0, 390.0, 844.0}));
  EXPECT_EQ(snapshot["player"]["gravity"], "resizeAspect")
      << "an upright video on a turned screen is letterboxed";
  EXPECT_EQ(world.view("playerPlaceholder")["frame"], json({0.0, 0.0, 844.0, 390.0}));
  host().headlessApplication().setDeviceOrientation(ui::DeviceOrientation::faceUp);
  EXPECT_DOUBLE_EQ(host().snapshot()["rotation"], std::numbers::pi / 2) << "lying flat says nothing";
}

TEST_F(CampaignScreen, WearsTheBannerInTestModeOnly) {
  const auto hasBanner = [this] {
    const json snapshot = host().snapshot();
    for (const auto& view : snapshot["views"]) {
      if (view.value("text", "") == "TEST MODE") return true;
    }
    return false;
  };
  ASSERT_TRUE(world.showing(SdkWorld::rewarded));
  EXPECT_TRUE(hasBanner());
  host().navigate("closead:");
  world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.isTestMode = false; });
  world.lines.clear();
  ASSERT_TRUE(world.precache(SdkWorld::rewarded));
  world.show(SdkWorld::rewarded);
  EXPECT_FALSE(hasBanner());
}

}  // namespace
}  // namespace vantorium
