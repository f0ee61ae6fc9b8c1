#include "screens/reward_claim.hpp"

#include <gtest/gtest.h>

#include "support/sdk_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using testing::SdkWorld;

struct RewardClaimTest : ::testing::Test {
  SdkWorld world;
  static constexpr const char* reward = "didReceiveReward rewarded-main 50";

  headless::Host& host() { return *world.host; }
  std::size_t asked() const { return world.requests("/api/canReward/"); }
  /// Loses so many connections in the middle of the answer; earlier, libcurl would ask again by itself.
  void loseAnswers(int times) {
    world.server.setFaults(
        {{"path", "/api/canReward/"}, {"fault", "connectionReset"}, {"afterBytes", 1}, {"times", times}});
  }
  /// Sees the film to its end and closes the ad; nothing but a claim waits for its time then.
  void earn() {
    ASSERT_TRUE(world.showing(SdkWorld::rewarded));
    host().videoEvent("ended");
    host().navigate("closead://x");
    ASSERT_TRUE(world.await("show true"));
  }
  bool awaitRetry() {
    return host().loop().runUntil([&] { return host().loop().pendingTimers() == 1; });
  }
  void goOnline(bool isOnline) {
    host().reachability().setState({.flags = isOnline ? reachability_flags::reachable : 0});
    host().loop().runPending();
  }
};

TEST_F(RewardClaimTest, IsRepeatedUntilThereIsAnAnswer) {
  loseAnswers(3);
  earn();
  double pause = 5;
  for (std::size_t times = 1; times <= 3; ++times, pause *= 2) {
    ASSERT_TRUE(awaitRetry());
    EXPECT_EQ(asked(), times);
    EXPECT_FALSE(world.has(reward));
    host().advance(1.2 * pause);
  }
  ASSERT_TRUE(world.await(reward));
  host().advance(3600);
  EXPECT_EQ(world.count(reward), 1);
  EXPECT_EQ(asked(), 4U);
}

TEST_F(RewardClaimTest, IsRepeatedAtOnceWhenTheDeviceComesOnline) {
  loseAnswers(1);
  earn();
  ASSERT_TRUE(awaitRetry());
  goOnline(false);
  EXPECT_EQ(asked(), 1U);
  goOnline(true);
  ASSERT_TRUE(world.await(reward));
  EXPECT_EQ(host().loop().pendingTimers(), 0U);
}

TEST_F(RewardClaimTest, AnAnswerThatIsNeitherYesNorNoIsNone) {
  world.server.setCanReward(SdkWorld::rewarded, "maybe");
  earn();
  ASSERT_TRUE(awaitRetry());
  EXPECT_FALSE(world.has(reward));
  world.server.setCanReward(SdkWorld::rewarded, "false");
  goOnline(false);
  goOnline(true);
  ASSERT_TRUE(world.host->loop().runUntil([&] { return asked() == 2; }));
  host().loop().runPending();
  host().advance(3600);
  EXPECT_EQ(asked(), 2U) << "no is an answer";
  EXPECT_FALSE(world.has(reward));
}

TEST_F(RewardClaimTest, EndsWithTheSDK) {
  loseAnswers(1);
  earn();
  ASSERT_TRUE(awaitRetry());
  world.restart();
  EXPECT_EQ(asked(), 1U);
  world.server.setFaults({{"path", "/api/canReward/"}, {"fault", "neverAnswers"}});
  world.lines.clear();
  earn();
  ASSERT_TRUE(world.server.waitForRequest([&](const json&) { return asked() == 2; }));
  world.restart();  // cancels the exchange, which is no reason to repeat it
  EXPECT_FALSE(world.has(reward));
}

}  // namespace
}  // namespace vantorium
