#include "model/campaign.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "model/json.hpp"

namespace vantorium {
namespace {

using nlohmann::json;

TEST(CampaignTest, TakesEveryFieldFromItsKey) {
  const Campaign campaign(json{{"campaignId", "c"},
                               {"impressionId", "i"},
                               {"videoUrl", "v"},
                               {"trackingUrl", "t"},
                               {"preparedTrackingUrl", "p"},
                               {"trackingHash", "th"},
                               {"storeAppId", "s"},
                               {"endUrl", {"e1", "e2"}},
                               {"hash", "h"},
                               {"rewardAmount", 5},
                               {"playableAssetsUrls", {"pa"}},
                               {"type", "playable"},
                               {"tag", "<b>"},
                               {"baseUrl", "b"},
                               {"adUnitType", "rewarded_video"},
                               {"rewardMethod", "client"},
                               {"customImage", "ci"},
                               {"endAssets", json::array({json::array({"a", "b"}), json::array()})},
                               {"orientation", "Landscape"},
                               {"zippedUrl", "z"},
                               {"isRewarded", true}});
  EXPECT_EQ(campaign.campaignID + campaign.impressionID + campaign.videoURL + campaign.trackingURL, "civt");
  EXPECT_EQ(campaign.preparedTrackingURL + campaign.trackingHash + campaign.storeAppID + campaign.hash,
            "pthsh");
  EXPECT_EQ(campaign.tag + campaign.baseURL + campaign.customImage + campaign.zippedURL, "<b>bciz");
  EXPECT_EQ(campaign.type, CampaignType::playable);
  EXPECT_EQ(campaign.adUnitType, AdUnitType::rewardedVideo);
  EXPECT_EQ(campaign.rewardMethod, RewardMethod::client);
  EXPECT_EQ(campaign.orientation, CampaignOrientation::landscape);
  EXPECT_EQ(campaign.endURL, (std::vector<std::string>{"e1", "e2"}));
  EXPECT_EQ(campaign.playableAssetsURLs, std::vector<std::string>{"pa"});
  EXPECT_EQ(campaign.endAssets, (std::vector<std::vector<std::string>>{{"a", "b"}, {}}));
  EXPECT_EQ(campaign.rewardAmount, 5);
  EXPECT_FALSE(campaign.isRewarded);
}

TEST(CampaignTest, ReadsKindsToTheLetterButForTheOrientation) {
  EXPECT_EQ(campaignType("Playable"), CampaignType::video);
  EXPECT_EQ(adUnitType("video_interstitial"), AdUnitType::videoInterstitial);
  EXPECT_EQ(adUnitType("rewarded_video "), AdUnitType::other);
  EXPECT_EQ(rewardMethod("server"), RewardMethod::other);
  EXPECT_EQ(campaignOrientation("PORTRAIT"), CampaignOrientation::portrait);
  EXPECT_EQ(campaignOrientation("sideways"), CampaignOrientation::any);
  EXPECT_EQ(assetType("Image"), AssetType::other);
}

TEST(CampaignTest, KeepsTheDefaultOfAFieldOfAnotherType) {
  for (const json& source : {json::object(), json(7), json::array({1}),
                             json{{"campaignId", 123},
                                  {"videoUrl", nullptr},
                                  {"endUrl", {"a", 1}},
                                  {"playableAssetsUrls", "a"},
                                  {"endAssets", {{"a"}, "b"}},
                                  {"rewardAmount", "5"}}}) {
    const Campaign campaign(source);
    EXPECT_EQ(campaign.campaignID + campaign.videoURL, "") << source;
    EXPECT_TRUE(campaign.endURL.empty() && campaign.playableAssetsURLs.empty() && campaign.endAssets.empty());
    EXPECT_EQ(campaign.rewardAmount, 0);
    EXPECT_TRUE(
        std::regex_match(campaign.identifier, std::regex("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}")));
  }
  EXPECT_NE(Campaign(json::object()).identifier, Campaign(json::object()).identifier);
}

TEST(CampaignTest, TakesWholeRewardsThatFit) {
  const std::vector<std::pair<const char*, std::int64_t>> amounts = {
      {"5", 5},
      {"5.0", 5},
      {"-3", -3},
      {"2.5", 0},
      {"1e3", 1000},
      {"1e300", 0},
      {"9223372036854775807", 9223372036854775807},
      {"9223372036854775808", 0},
      {"9223372036854775808.0", 0},
      {"true", 0},
  };
  for (const auto& [text, amount] : amounts)
    EXPECT_EQ(Campaign(json{{"rewardAmount", json::parse(text)}}).rewardAmount, amount) << text;
}

TEST(JSONTest, RefusesWhatWouldExhaustTheProcessAndSaysWhy) {
  const auto nested = [](int depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  std::optional<Error> error;
  EXPECT_TRUE(parseJSON(nested(maxJSONDepth), error));
  EXPECT_FALSE(error);
  for (const std::string& hostile :
       {nested(maxJSONDepth + 1), nested(1'000'000), std::string(1'000'000, '['),
        std::string(maxJSONBytes + 1, ' '), std::string(), std::string("{\"a\":\xff}"),
        std::string("\"") + std::string(100'000, 'x'), std::string("1e999"), std::string("{}\0{}", 5),
        std::string("{\"a\":\"\0\"}", 9)}) {
    error.reset();
    EXPECT_FALSE(parseJSON(hostile, error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), "json");
    EXPECT_FALSE(error->errorMessage().empty());
    EXPECT_LT(error->errorMessage().size(), 1000U);
  }
}

TEST(JSONTest, WritesStringsThatAreNotText) {
  const std::string text = prettyPrinted({{"log",
                                           "a\xff"
                                           "b"}});
  EXPECT_EQ(text, "{\n  \"log\": \"a\uFFFDb\"\n}");
}

}  // namespace
}  // namespace vantorium
