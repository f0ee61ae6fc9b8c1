#include <gtest/gtest.h>

#include "support/service_world.hpp"

namespace vantorium {
namespace {

using Ads = testing::Outcome<std::vector<std::shared_ptr<VantoriumNativeAd>>, std::optional<Error>>;

auto nativeAds(const std::shared_ptr<const Client>& client) {
  Ads outcome;
  client->httpClient->getNativeAds("p 1", {{"creativeType", "bo th"}}, 3, {"a", "b"}, outcome.completion());
  return outcome.get();
}

TEST(NativeAdsEndpoint, AsksInTheServicesWords) {
  testing::ServiceWorld world;
  const auto& client = world.configuredClient();
  world.server.setAnswer("/api/sdk/native", 500, "application/json",
                         R"({"status":"success","result":[{"impressionId":"i1"},{}]})");
  const auto [ads, error] = nativeAds(client);
  EXPECT_EQ(error, std::nullopt);
  ASSERT_EQ(ads.size(), 2U);
  EXPECT_EQ(ads[0]->impressionID + ads[0]->placementID, "i1p 1");
  const auto requests = world.requests("/api/sdk");
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0]["target"],
            "/api/sdk/native?placementId=p%201&connectionType=WIFI&numOfCampaigns=3&cachedCampaignIds=a"
            "&cachedCampaignIds=b&creativeType=bo%20th");
  EXPECT_EQ(requests[0]["method"], "GET");
  for (const char* header : {"Authorization", "User-Agent", "Content-Type"}) {
    EXPECT_TRUE(requests[0]["headers"].contains(header)) << header;
  }
}

TEST(NativeAdsEndpoint, RefusesBeforeAnythingIsSent) {
  testing::ServiceWorld world;
  const auto early = nativeAds(world.client());
  EXPECT_TRUE(std::get<0>(early).empty());
  EXPECT_EQ(std::get<1>(early), VantoriumError::notConfigured());
  EXPECT_TRUE(world.requests("/api/sdk").empty());
}

TEST(NativeAdsEndpoint, FailsWithWhatTheAnswerSays) {
  testing::ServiceWorld world;
  const auto& client = world.configuredClient();
  const Error invalid = VantoriumError::internalError("Invalid server response.");
  const std::vector<std::pair<std::string, Error>> answers{
      {R"({"status":"success","result":[]})",
       VantoriumError::internalError("No native ads available at the moment.")},
      {R"({"status":"success","data":[{}]})", invalid},
      {R"({"status":"success","result":[{},7]})", invalid},
      {R"({"status":"success","result":{}})", invalid},
      {R"({"status":"error","error":"Closed."})", VantoriumError::internalError("Closed.")},
  };
  std::size_t logged = 0;
  for (const auto& [body, expected] : answers) {
    world.server.setAnswer("/api/sdk/native", 200, "application/json", body);
    const auto [ads, error] = nativeAds(client);
    EXPECT_TRUE(ads.empty()) << body;
    EXPECT_EQ(error, expected) << body;
    if (expected != invalid) continue;
    const auto reports = world.awaitReports(++logged);
    ASSERT_EQ(reports.size(), logged);
    EXPECT_TRUE(reports.back().starts_with("Invalid server response from /api/nativeads/ Response: " + body));
  }
  world.server.setAnswer("/api/sdk/native", 200, "text/html", "<html>");
  EXPECT_EQ(std::get<1>(nativeAds(client))->domain(), "json");
  EXPECT_EQ(world.awaitReports(logged + 1).size(), logged + 1);
}

}  // namespace
}  // namespace vantorium
