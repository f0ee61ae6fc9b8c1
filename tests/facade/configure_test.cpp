#include <gtest/gtest.h>

#include <future>

#include "support/sdk_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using testing::SdkWorld;

json initBody(const SdkWorld& world, std::size_t index) {
  std::vector<json> bodies;
  for (const auto& request : world.server.requests()) {
    if (request["target"] == "/api/init") bodies.push_back(request["body"]);
  }
  return bodies.at(index);
}

TEST(Configure, TellsDelegateThenCompletionAndKeepsTheToken) {
  SdkWorld world;
  ASSERT_TRUE(world.configure());
  EXPECT_EQ(world.lines, (std::vector<std::string>{"didConfigure", "configure true"}));
  EXPECT_TRUE(world.sdk->client()->httpClient->sessionToken());
  EXPECT_FALSE(world.sdk->context()->flags().isConfiguring);
  EXPECT_TRUE(world.sdk->context()->flags().isTestMode);

  // A second call is a success without an exchange, whatever it is given.
  world.sdk->configure("other", std::nullopt, nullptr, world.noting("again"));
  ASSERT_TRUE(world.await("again true"));
  EXPECT_EQ(world.requests("/api/init"), 1U);
}

TEST(Configure, RefusesWhileUnderWay) {
  SdkWorld world;
  {
    const MutexLock hold(world.answering);
    world.sdk->configure("app", std::nullopt, nullptr, world.noting("first"));
    world.sdk->configure("app", std::nullopt, nullptr, world.noting("second"));
    EXPECT_TRUE(world.lines.empty()) << "nothing is called inside the call";
    ASSERT_TRUE(world.await("second false " + VantoriumError::functionInProgress().localizedDescription()));
  }
  ASSERT_TRUE(world.await("first true"));
  EXPECT_EQ(world.requests("/api/init"), 1U);
}

TEST(Configure, FailureCanBeTriedAgainAndIsReported) {
  SdkWorld world;
  world.server.setFaults(
      {{"path", "/api/init"}, {"fault", "serviceError"}, {"text", "closed"}, {"times", 1}});
  world.sdk->configure("app", std::nullopt, nullptr, world.noting("configure"));
  ASSERT_TRUE(world.await("configure false closed Domain: com.vantorium Code: 2"));
  EXPECT_EQ(world.lines[0], "didFailConfigure closed Domain: com.vantorium Code: 2");
  const auto report =
      world.server.waitForRequest([](const json& request) { return request["target"] == "/api/logError"; });
  ASSERT_TRUE(report);
  EXPECT_TRUE(
      (*report)["body"]["log"].get<std::string>().starts_with("closed Domain: com.vantorium Code: 2\n"));
  EXPECT_TRUE(world.configure());
}

TEST(Configure, RemembersUserAndInstallationAcrossProcesses) {
  SdkWorld world;
  ASSERT_TRUE(world.configure());
  const json first = initBody(world, 0);
  EXPECT_EQ(first["userId"].get<std::string>().size(), 36U);
  EXPECT_EQ(first["firstInstallTime"], 1767225600000);

  world.restart();
  world.lines.clear();
  world.host->loop().setNow(world.host->loop().now() + std::chrono::hours(48));
  world.sdk->configure("app", Parameters{{"userId", "u1"}, {"age", 30}, {"gender", "m"}, {"other", "x"}},
                       nullptr, world.noting("configure"));
  ASSERT_TRUE(world.await("configure true"));
  const json second = initBody(world, 1);
  EXPECT_EQ(second["userId"], "u1");
  EXPECT_EQ(second["age"], 30);
  EXPECT_FALSE(second.contains("other"));
  EXPECT_EQ(second["firstInstallTime"], first["firstInstallTime"]);
  EXPECT_EQ(second["lastUpdateTime"], first["lastUpdateTime"]) << "the version did not change";

  world.restart();
  world.lines.clear();
  world.sdk->configure("app", Parameters{{"userId", 7}}, nullptr, world.noting("configure"));
  ASSERT_TRUE(world.await("configure true"));
  EXPECT_EQ(initBody(world, 2)["userId"], "u1");
}

TEST(Configure, AutoCachesTheRightPlacementsInOrder) {
  SdkWorld world;
  const auto campaigns = json::array({json{{"campaignId", "c"}, {"videoUrl", "{{base}}/v.mp4"}}});
  world.server.setAnswer("/v.mp4", 200, "video/mp4", "film");
  for (const char* placement : {"A", "B", "C"}) world.server.setCampaigns(placement, campaigns);
  world.server.setInitAnswer({{"status", "success"},
                              {"token", "t"},
                              {"placements",
                               {{{"id", "A"}, {"type", "rewarded_video"}},
                                {{"id", "B"}, {"type", "offer_wall"}},
                                {{"type", "video_interstitial"}},
                                {{"id", "C"}, {"type", "video_interstitial"}}}}});
  ASSERT_TRUE(world.configure(true));
  ASSERT_TRUE(world.await("didPrecache C"));
  EXPECT_EQ(world.lines,
            (std::vector<std::string>{"didConfigure", "configure true", "didPrecache A", "didPrecache C"}));
  EXPECT_EQ(world.requests("/api/campaigns"), 2U);
  EXPECT_TRUE(world.sdk->isCampaignReady("A"));
  EXPECT_FALSE(world.sdk->isCampaignReady("B"));
}

TEST(Configure, DelegateMayBeGoneOrSilent) {
  SdkWorld world;
  world.delegate->silent = DelegateMethod::didConfigure;
  ASSERT_TRUE(world.configure());
  EXPECT_EQ(world.lines, std::vector<std::string>{"configure true"});

  std::weak_ptr<VantoriumDelegate> gone = world.delegate;
  world.sdk->configure("app", std::nullopt, nullptr, world.noting("again"));
  world.delegate.reset();  // after the call was queued, before it is made
  ASSERT_TRUE(world.await("again true"));
  EXPECT_TRUE(gone.expired());
}

TEST(Configure, CompletesOnTheGivenQueueAndOnShutdown) {
  SdkWorld world;
  world.server.setFaults({{"path", "/api/init"}, {"fault", "neverAnswers"}});
  const auto queue = DispatchQueue::serial("application");
  std::promise<std::pair<bool, std::thread::id>> ended;
  world.sdk->configure("app", std::nullopt, queue, [&](bool success, const std::optional<Error>&) {
    ended.set_value({success, std::this_thread::get_id()});
  });
  ASSERT_TRUE(world.server.waitForRequest([](const json&) { return true; }));
  world.sdk->shutdown();
  const auto [success, thread] = ended.get_future().get();
  EXPECT_FALSE(success);
  EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(Configure, ServiceIsChosenBeforeFirstUseOnly) {
  SdkWorld world;
  ServiceConfiguration elsewhere;
  for (const char* url : {"http://ads.example", "ftp://127.0.0.1", "", "https://ads.example/", "nonsense"}) {
    elsewhere.baseURL = url;
    EXPECT_TRUE(world.sdk->setServiceConfiguration(elsewhere)) << url;
  }
  elsewhere.baseURL = world.server.baseURL();
  EXPECT_FALSE(world.sdk->setServiceConfiguration(elsewhere));
  ASSERT_TRUE(world.configure());
  EXPECT_TRUE(world.sdk->setServiceConfiguration(elsewhere));
}

}  // namespace
}  // namespace vantorium
