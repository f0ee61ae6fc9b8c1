#include <gtest/gtest.h>

#include "support/sdk_world.hpp"

namespace vantorium {
namespace {

using testing::SdkWorld;

TEST(ShowCampaign, RefusesInsideTheCallInOrder) {
  SdkWorld world;
  world.show("p");
  EXPECT_EQ(world.lines.back(), "show false " + VantoriumError::notConfigured().localizedDescription());
  ASSERT_TRUE(world.configure());
  world.show("p");
  EXPECT_EQ(world.lines.back(),
            "show false " + VantoriumError::noPrecachedDataToShow().localizedDescription());
  EXPECT_FALSE(world.sdk->context()->flags().isShowingAds) << "the next call would be refused";

  ASSERT_TRUE(world.precache(SdkWorld::rewarded));
  world.host->reachability().setState({.flags = 0});
  world.show(SdkWorld::rewarded);
  EXPECT_EQ(world.lines.back(),
            "show false " + VantoriumError::noInternetConnection().localizedDescription());

  world.host->reachability().setState({});
  world.show(SdkWorld::rewarded);
  EXPECT_EQ(world.sdk->context()->flags().showingPlacement, SdkWorld::rewarded);
  world.show(SdkWorld::rewarded);
  EXPECT_EQ(world.lines.back(), "show false " + VantoriumError::functionInProgress().localizedDescription());
  world.host->navigate("CLOSEAD://x");
  EXPECT_EQ(world.lines.back(), "show true");
  EXPECT_FALSE(world.sdk->context()->flags().isShowingAds);
}

TEST(ShowCampaign, NeedsAMonitorAndTheMainThread) {
  SdkWorld world;
  world.hasMonitor = false;
  world.restart();
  ASSERT_TRUE(world.configure());
  world.show("p");
  EXPECT_EQ(world.lines.back(), "show false " + VantoriumError::internalError().localizedDescription());

  std::thread([&] { world.show("p"); }).join();
  EXPECT_TRUE(world.lines.back().starts_with("show false Ads are shown from the main thread."));
}

TEST(ShowCampaign, WithoutAScreenToCoverEndsAtOnce) {
  SdkWorld world;
  ASSERT_TRUE(world.configure());
  ASSERT_TRUE(world.precache(SdkWorld::rewarded));
  world.host->headlessApplication().setTopMost(headless::HeadlessApplication::TopMost::none);
  world.show(SdkWorld::rewarded);
  EXPECT_TRUE(world.lines.back().starts_with("show false Can't find top most view controller to show ads."));
  EXPECT_FALSE(world.sdk->context()->flags().isShowingAds);
}

TEST(ShowCampaign, WaitsForARunningTransition) {
  SdkWorld world;
  ASSERT_TRUE(world.configure());
  ASSERT_TRUE(world.precache(SdkWorld::rewarded));
  world.host->headlessApplication().setTopMost(headless::HeadlessApplication::TopMost::transitioning);
  world.show(SdkWorld::rewarded);
  EXPECT_TRUE(world.host->snapshot().is_null());
  world.host->headlessApplication().completeTransition();
  EXPECT_EQ(world.host->snapshot()["screen"], "CampaignVC");
}

TEST(ShowCampaign, ReplenishesOnceTheImpressionIsTaken) {
  SdkWorld world;
  ASSERT_TRUE(world.configure());
  ASSERT_TRUE(world.precache(SdkWorld::rewarded));
  world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.autoCaching = true; });
  world.lines.clear();
  world.show(SdkWorld::rewarded);
  ASSERT_TRUE(world.await("didPrecache rewarded-main"));
  EXPECT_TRUE(world.sdk->isCampaignReady(SdkWorld::rewarded));
  EXPECT_EQ(world.events("impression"), 1U);
}

TEST(ShowCampaign, EndsWithItsWindow) {
  SdkWorld world;
  ASSERT_TRUE(world.showing(SdkWorld::rewarded));
  world.host->headlessApplication().frontScreen()->dismiss(false);
  EXPECT_EQ(world.count("show false The window that showed the ad was closed. Domain: com.vantorium Code: 2"),
            1);
  EXPECT_FALSE(world.sdk->context()->flags().isShowingAds);
}

TEST(ShowCampaign, ShutdownTakesTheScreenAway) {
  SdkWorld world;
  ASSERT_TRUE(world.showing(SdkWorld::rewarded));
  const std::weak_ptr<ui::ViewController> screen = world.host->headlessApplication().frontScreen();
  world.sdk->shutdown();
  world.sdk->shutdown();
  EXPECT_TRUE(world.lines.back().starts_with("show false The SDK was shut down"));
  world.host->loop().runPending();
  EXPECT_TRUE(screen.expired());
}

}  // namespace
}  // namespace vantorium
