#include <gtest/gtest.h>

#include <algorithm>

#include <vantorium/headless.hpp>

#include "support/sdk_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using testing::SdkWorld;

TEST(Precache, RefusalsReachDelegateAndCompletion) {
  SdkWorld world;
  world.sdk->precacheCampaigns("p", nullptr, world.noting("early"));
  world.sdk->canView("p", nullptr, world.noting("canView"));
  ASSERT_TRUE(world.await("canView false " + VantoriumError::notConfigured().localizedDescription()));
  EXPECT_EQ(world.lines[0], "didFailPrecache p 1");
  EXPECT_TRUE(world.lines[1].starts_with("early false Vantorium framework is not configured."));
  EXPECT_FALSE(world.sdk->isCampaignReady("p"));

  ASSERT_TRUE(world.configure());
  world.lines.clear();
  {
    const MutexLock hold(world.answering);
    world.sdk->precacheCampaigns(SdkWorld::rewarded, nullptr, world.noting("first"));
    world.sdk->precacheCampaigns(SdkWorld::rewarded, nullptr, world.noting("second"));
    ASSERT_TRUE(world.host->loop().runUntil([&] { return world.lines.size() == 2; }));
  }
  EXPECT_EQ(world.lines[0], "didFailPrecache rewarded-main 5");
  EXPECT_TRUE(world.lines[1].starts_with("second false This function is in progress"));
  ASSERT_TRUE(world.await("first true"));
  EXPECT_EQ(world.requests("/api/campaigns"), 1U);
}

TEST(Precache, FetchesOnlyWhenNothingIsLeftToShow) {
  SdkWorld world;
  ASSERT_TRUE(world.configure());
  ASSERT_TRUE(world.precache(SdkWorld::rewarded));
  EXPECT_TRUE(world.sdk->isCampaignReady(SdkWorld::rewarded));
  ASSERT_TRUE(world.precache(SdkWorld::rewarded));
  EXPECT_EQ(world.requests("/api/campaigns"), 1U);

  // One is left, but an ad of the placement is on screen and nobody else replenishes.
  world.sdk->context()->updateFlags(
      [](SdkContext::Flags& flags) { flags.showingPlacement = SdkWorld::rewarded; });
  world.lines.clear();
  ASSERT_TRUE(world.precache(SdkWorld::rewarded));
  EXPECT_EQ(world.requests("/api/campaigns"), 2U);
  EXPECT_EQ(world.sdk->client()->cacheClient.inventory->getNumberOfCampaigns(SdkWorld::rewarded), 2);
}

TEST(Precache, CampaignWhoseCreativeIsOnDiskIsShowable) {
  SdkWorld world;
  ASSERT_TRUE(world.showing(SdkWorld::rewarded));
  const json first = world.host->snapshot();
  world.host->navigate("closead://x");
  world.lines.clear();
  ASSERT_TRUE(world.precache(SdkWorld::rewarded));
  EXPECT_EQ(world.requests("/media/"), 1U) << "the creative was downloaded again";
  world.show(SdkWorld::rewarded);
  world.host->loop().runPending();
  const json second = world.host->snapshot();
  ASSERT_FALSE(second.is_null());
  EXPECT_EQ(second["player"]["source"], first["player"]["source"]);
  EXPECT_EQ(second["web"]["url"], first["web"]["url"]);
}

TEST(Precache, OneOfThreeFails) {
  SdkWorld world;
  const std::string film = world.server.baseURL() + "/v.mp4";
  const auto campaign = [](const char* id, const std::string& video) {
    return json{{"campaignId", id}, {"videoUrl", video}};
  };
  world.server.setAnswer("/v.mp4", 200, "video/mp4", "film");
  const json fetched{{"status", "success"},
                     {"data", {campaign("a", film), campaign("b", "not a url"), campaign("c", film)}}};
  world.server.setAnswer("/api/campaigns", 200, "application/json", fetched.dump());
  ASSERT_TRUE(world.configure());
  world.sdk->precacheCampaigns("p", nullptr, world.noting("precache"));
  ASSERT_TRUE(world.await("didPrecache p"));
  world.host->loop().runPending();
  // With or without an error: that of the one that ended last.
  EXPECT_TRUE(world.lines.back().starts_with("precache true"));
  EXPECT_EQ(world.sdk->client()->cacheClient.inventory->getNumberOfCampaigns("p"), 2);

  // Those that were shown are named to the service too, behind the others.
  world.show("p");
  world.host->loop().runPending();
  world.sdk->precacheCampaigns("p", nullptr, world.noting("more"));
  EXPECT_TRUE(world.server.waitForRequest([](const json& request) {
    const std::string target = request["target"];
    return target.ends_with("&cachedCampaignIds=a&cachedCampaignIds=c") ||
           target.ends_with("&cachedCampaignIds=c&cachedCampaignIds=a");
  }));
}

struct RetrySeries : ::testing::Test {
  /// The fetches of the auto-cached placement so far, once `number` of them have failed.
  void awaitFailures(int number) {
    const std::string line = std::string("didFailPrecache ") + SdkWorld::rewarded + " 2";
    ASSERT_TRUE(world.host->loop().runUntil([&] { return world.count(line) >= number; }));
    world.host->loop().runPending();
  }
  void configureWithout(const json& fault) {
    if (!fault.empty()) world.server.setFaults(fault);
    world.server.setInitAnswer({{"status", "success"},
                                {"token", "t"},
                                {"placements", {{{"id", SdkWorld::rewarded}, {"type", "rewarded_video"}}}}});
    ASSERT_TRUE(world.configure(true));
  }
  SdkWorld world;
};

TEST_F(RetrySeries, AsksAnHourLaterAsLongAsTheServiceHasNothing) {
  configureWithout({{"path", "/api/campaigns"}, {"fault", "noFill"}});
  for (int failures = 1; failures <= 8; ++failures) {
    awaitFailures(failures);
    world.host->advance(0.79 * 3600);
    EXPECT_EQ(world.requests("/api/campaigns"), failures) << "not so soon";
    if (failures == 8) world.server.clearFaults();
    world.host->advance(0.42 * 3600);
  }
  ASSERT_TRUE(world.await("didPrecache rewarded-main"));
  world.host->loop().runPending();
  const auto fetches = world.requests("/api/campaigns");
  world.host->advance(36000);
  EXPECT_EQ(world.requests("/api/campaigns"), fetches) << "nothing is left to retry";
}

TEST_F(RetrySeries, TriesAgainAfterFailuresOfTheNetworkEverMoreSeldom) {
  configureWithout({{"path", "/api/campaigns"}, {"fault", "connectionReset"}});
  const auto failures = [&] {
    return std::ranges::count_if(world.lines, [](const auto& line) { return line.starts_with("didFail"); });
  };
  double pause = 30;
  for (int tries = 1; tries <= 9; ++tries) {
    ASSERT_TRUE(world.host->loop().runUntil([&] { return failures() == tries; }));
    world.host->loop().runPending();
    world.host->advance(0.79 * pause);
    EXPECT_EQ(failures(), tries) << "a pause of " << pause << " s";
    world.host->advance(0.42 * pause);
    pause = std::min(2 * pause, 3600.0);
  }
  // The device comes online: nobody waits for an hour then.
  ASSERT_TRUE(world.host->loop().runUntil([&] { return failures() == 10; }));
  world.server.clearFaults();
  world.host->loop().runPending();
  ASSERT_FALSE(headless::setOnline(*world.host, false));
  world.host->loop().runPending();
  ASSERT_FALSE(headless::setOnline(*world.host, true));
  ASSERT_TRUE(world.await("didPrecache rewarded-main"));
}

TEST_F(RetrySeries, ReplacesACampaignThatNobodyShowedForADay) {
  configureWithout(json::object());
  ASSERT_TRUE(world.await("didPrecache rewarded-main"));
  world.host->loop().runPending();
  world.server.setFaults({{"path", "/api/campaigns"}, {"fault", "connectionReset"}});
  world.host->advance(1.6 * 24 * 3600);
  ASSERT_TRUE(world.host->loop().runUntil(
      [&] { return world.lines.back().starts_with("didFailPrecache rewarded-main"); }));
  EXPECT_TRUE(world.sdk->isCampaignReady(SdkWorld::rewarded)) << "shown until there is a newer one";
  const auto next = [&] {
    const auto inventory = world.sdk->client()->cacheClient.inventory;
    return inventory->getNextCampaign(SdkWorld::rewarded, world.host->clock().now()).campaign->campaign;
  };
  const auto old = next();
  world.server.clearFaults();
  world.lines.clear();
  world.host->loop().runPending();
  world.host->advance(3600);
  ASSERT_TRUE(world.await("didPrecache rewarded-main"));
  const auto inventory = world.sdk->client()->cacheClient.inventory;
  EXPECT_EQ(inventory->getNumberOfCampaigns(SdkWorld::rewarded), 1U);
  EXPECT_NE(next(), old);
}

TEST_F(RetrySeries, DoesNotLetASlowPlacementHoldUpTheOthers) {
  world.server.setFaults({{"path", "/media/"}, {"fault", "neverAnswers"}, {"times", 1}});
  world.server.setInitAnswer({{"status", "success"},
                              {"token", "t"},
                              {"placements",
                               {{{"id", SdkWorld::rewarded}, {"type", "rewarded_video"}},
                                {{"id", "playable-rewarded"}, {"type", "video_interstitial"}}}}});
  ASSERT_TRUE(world.configure(true));
  ASSERT_TRUE(world.server.waitForRequest(
      [](const json& request) { return request["path"].get<std::string>().starts_with("/media/"); }));
  world.host->advance(16);
  ASSERT_TRUE(world.await("didPrecache playable-rewarded"));
  EXPECT_FALSE(world.sdk->isCampaignReady(SdkWorld::rewarded));
}

TEST(CanView, GivesTheServicesWord) {
  SdkWorld world;
  ASSERT_TRUE(world.configure());
  world.server.setCanView("no", "false");
  world.server.setCanView("odd", "perhaps");
  world.sdk->canView("yes", nullptr, world.noting("yes"));
  world.sdk->canView("no", nullptr, world.noting("no"));
  world.sdk->canView("odd", nullptr, world.noting("odd"));
  ASSERT_TRUE(world.await("odd false Invalid server response. Domain: com.vantorium Code: 2"));
  ASSERT_TRUE(world.await("yes true"));
  ASSERT_TRUE(world.await("no false"));
}

}  // namespace
}  // namespace vantorium
