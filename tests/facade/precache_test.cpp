#include <gtest/gtest.h>

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

  // One is left, but it is the one on screen and nobody else replenishes.
  world.sdk->context()->updateFlags(
      [](SdkContext::Flags& flags) { flags.showingPlacement = SdkWorld::rewarded; });
  world.lines.clear();
  ASSERT_TRUE(world.precache(SdkWorld::rewarded));
  EXPECT_EQ(world.requests("/api/campaigns"), 2U);
  EXPECT_EQ(world.sdk->client()->cacheClient->getNumberOfCampaigns(SdkWorld::rewarded), 2);
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
  EXPECT_EQ(world.sdk->client()->cacheClient->getNumberOfCampaigns("p"), 2);

  // Used and unused ones are named to the service.
  world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.showingPlacement = "p"; });
  for (const auto& each : world.sdk->client()->cacheClient->getCampaigns("p")) each->isUsed = true;
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
    world.server.setFaults(fault);
    world.server.setInitAnswer({{"status", "success"},
                                {"token", "t"},
                                {"placements", {{{"id", SdkWorld::rewarded}, {"type", "rewarded_video"}}}}});
    ASSERT_TRUE(world.configure(true));
  }
  SdkWorld world;
};

TEST_F(RetrySeries, TriesFiveTimesHourlyThenWaitsForANewFailure) {
  configureWithout({{"path", "/api/campaigns"}, {"fault", "noFill"}});
  awaitFailures(1);
  world.host->advance(3599);
  EXPECT_EQ(world.requests("/api/campaigns"), 1U);
  world.host->advance(1);
  for (int failures = 2; failures <= 6; ++failures) {
    awaitFailures(failures);
    world.host->advance(3600);
  }
  world.host->advance(36000);
  EXPECT_EQ(world.requests("/api/campaigns"), 6U) << "the series has five retries";

  world.sdk->precacheCampaigns(SdkWorld::rewarded, nullptr, world.noting("by hand"));
  awaitFailures(7);
  world.host->advance(3600);
  awaitFailures(8);
  world.server.clearFaults();
  world.host->advance(3600);
  ASSERT_TRUE(world.await("didPrecache rewarded-main"));
  world.host->loop().runPending();
  const auto fetches = world.requests("/api/campaigns");
  world.host->advance(36000);
  EXPECT_EQ(world.requests("/api/campaigns"), fetches) << "nothing is left to retry";
}

TEST_F(RetrySeries, TransportFailuresAreNotRetried) {
  configureWithout({{"path", "/api/campaigns"}, {"fault", "connectionReset"}});
  ASSERT_TRUE(world.host->loop().runUntil(
      [&] { return !world.lines.empty() && world.lines.back().starts_with("didFailPrecache"); }));
  world.host->loop().runPending();
  const auto fetches = world.requests("/api/campaigns");
  world.host->advance(36000);
  EXPECT_EQ(world.requests("/api/campaigns"), fetches);
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
