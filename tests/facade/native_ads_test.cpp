#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "support/native_world.hpp"
#include "support/service_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using testing::NativeWorld;

json adWith(const json& assets, const std::string& icon) {
  return {{"info", {{"appIcon", icon}}}, {"assets", assets}};
}
json asset(const std::string& url) { return {{"url", url}, {"type", "image"}}; }

TEST(PrecacheNativeAds, BringsEveryFileToDisk) {
  NativeWorld world;
  const auto ads = world.fetch("native-feed", 5);
  EXPECT_EQ(world.error, std::nullopt);
  EXPECT_EQ(world.lines.back(), "didPrecache native-feed");
  ASSERT_EQ(ads.size(), 5U);
  std::set<std::string> folders;
  const std::string root = (world.host->directories().caches / "com.vantorium").string() + "/";
  for (const auto& ad : ads) {
    ASSERT_TRUE(ad->appIconFilePath);
    EXPECT_NE(ad->appIconImage(), nullptr);
    ASSERT_TRUE(ad->appIconFilePath->starts_with(root));
    folders.insert(ad->appIconFilePath->substr(root.size(), 36));
    for (const auto& one : ad->assets) {
      ASSERT_TRUE(one->filePath) << one->URL;
      EXPECT_EQ(one->filePath, one->internalFilePath);
      EXPECT_TRUE(std::filesystem::exists(*one->filePath));
    }
  }
  EXPECT_EQ(folders.size(), 5U) << "each ad has a folder of its own";
}

TEST(PrecacheNativeAds, AsksForAtMostFiveAndOnlyForWhatIsWanted) {
  NativeWorld world;
  ASSERT_TRUE(world.configure());
  const auto options = std::make_shared<VantoriumNativeAdOptions>();
  options->numberOfAdsToPrecache = 9;
  options->shouldDownloadAssets = false;
  options->creativeType = "video";
  bool isDone = false;
  NativeWorld::Ads ads;
  world.sdk->precacheNativeAds("native-feed", options, nullptr, [&](auto fetched, const auto& error) {
    EXPECT_EQ(error, std::nullopt);
    ads = std::move(fetched);
    isDone = true;
  });
  EXPECT_EQ(options->numberOfAdsToPrecache, 5) << "written back";
  ASSERT_TRUE(world.host->loop().runUntil([&] { return isDone; }));
  EXPECT_EQ(ads.size(), 5U);
  EXPECT_EQ(world.requests("/api/sdk/native?placementId=native-feed&connectionType=WIFI&numOfCampaigns=5"
                           "&creativeType=video"),
            1U);
  for (const auto& ad : ads) {
    EXPECT_EQ(ad->appIconFilePath, std::nullopt);
    for (const auto& one : ad->assets) EXPECT_EQ(one->filePath, std::nullopt);
  }
  EXPECT_EQ(world.requests("/static/") + world.requests("/media/"), 0U);
}

TEST(PrecacheNativeAds, RefusesInTheCompletionAlone) {
  NativeWorld world;
  const auto note = [&](const std::string& name) {
    return [&world, name](const NativeWorld::Ads& ads, const std::optional<Error>& error) {
      world.lines.push_back(fmt::format("{} {} {}", name, ads.size(), error ? error->code() : 0));
    };
  };
  world.sdk->precacheNativeAds("native-row", nullptr, nullptr, note("early"));
  ASSERT_TRUE(world.await("early 0 1"));
  ASSERT_TRUE(world.configure());
  {
    const MutexLock hold(world.answering);
    world.sdk->precacheNativeAds("native-row", nullptr, nullptr, note("first"));
    world.sdk->precacheNativeAds("native-row", nullptr, nullptr, note("second"));
    world.sdk->precacheCampaigns("native-row", nullptr, world.noting("campaigns"));
    ASSERT_TRUE(world.await("second 0 5"));
  }
  ASSERT_TRUE(world.await("first 1 0"));
  EXPECT_EQ(world.count("didPrecache native-row"), 1);
  EXPECT_EQ(world.count("didFailPrecache native-row 5"), 1) << "of the campaigns: placements are shared";
  world.sdk->precacheNativeAds("native-row", nullptr, nullptr, note("again"));
  EXPECT_TRUE(world.await("again 1 0"));

  world.server.setFaults({{{"path", "/api/sdk/native"}, {"fault", "noFill"}}});
  world.sdk->precacheNativeAds("native-row", nullptr, nullptr, note("dry"));
  ASSERT_TRUE(world.await("dry 0 2"));
  EXPECT_EQ(world.count("didFailPrecache native-row 2"), 1);
}

TEST(PrecacheNativeAds, HandsOutAdsWhoseFilesFailed) {
  NativeWorld world;
  const auto ad = world.fetchAd(
      adWith(json::array({asset("{{base}}/static/native/cairnway-sunrise.jpg"), asset("file:///etc/passwd"),
                          asset("{{base}}/static/native/cairnway-map.png")}),
             "{{base}}/static/native/cairnway-icon.png"));
  ASSERT_NE(ad, nullptr);
  ASSERT_TRUE(world.error);
  EXPECT_EQ(world.lines.back(), fmt::format("didFailPrecache p {}", world.error->code()));
  EXPECT_TRUE(ad->assets[0]->filePath);
  EXPECT_EQ(ad->assets[1]->filePath, std::nullopt);
  EXPECT_EQ(ad->assets[2]->filePath, std::nullopt) << "the first failure ends the walk";

  // An error page is no file.
  const auto page = world.fetchAd(
      adWith(json::array({asset("{{base}}/static/native/missing.png")}), "{{base}}/missing.png"));
  ASSERT_NE(page, nullptr);
  ASSERT_TRUE(world.error);
  EXPECT_EQ(world.error->code(), 404);
  EXPECT_EQ(page->appIconImage(), nullptr);
  EXPECT_EQ(page->assets[0]->image(), nullptr);
}

TEST(PrecacheNativeAds, KeepsItsFilesApart) {
  NativeWorld world;
  for (const char* path : {"/a.png", "/b", "/b/c.png"}) {
    world.server.setAnswer(path, 200, "image/png", path);
  }
  const std::vector<std::string> urls{"/a.png?1", "/a.png?2", "/b", "/b/c.png", "/a.png?1"};
  json assets = json::array();
  for (const auto& url : urls) assets.push_back(asset(world.url(url)));
  const auto ad = world.fetchAd(adWith(assets, world.url("/a.png?1")));
  ASSERT_EQ(world.error, std::nullopt);
  std::set<std::string> paths;
  for (std::size_t index = 0; index < urls.size(); ++index) {
    ASSERT_TRUE(ad->assets[index]->filePath) << urls[index];
    paths.insert(*ad->assets[index]->filePath);
    EXPECT_EQ(testing::contentOf(*ad->assets[index]->filePath), urls[index].substr(0, urls[index].find('?')));
  }
  EXPECT_EQ(paths.size(), 4U);
  EXPECT_EQ(ad->assets[0]->filePath, ad->appIconFilePath);
  EXPECT_EQ(world.requests("/a.png"), 2U) << "each address is fetched once";
}

TEST(PrecacheNativeAds, SurvivesHostileAnswersAndStaysInItsFolder) {
  NativeWorld world;
  const auto& caches = world.host->directories().caches;
  for (const char* placement : {"native-hostile-images", "native-hostile-video", "native-hostile-urls",
                                "native-hostile-types", "native-texts"}) {
    for (const auto& ad : world.fetch(placement, 5)) {
      const auto view = world.show(ad);
      world.host->advance(0.3);
      view->didTapCTAButton();
      view->didTapPrivacyPolicyImageView();
      view->removeFromSuperview();
    }
  }
  for (const auto& event : world.host->events()) {
    if (event["event"] != "openURL" || event["opened"] == false) continue;
    EXPECT_TRUE(event["url"].get<std::string>().starts_with("http")) << event;
  }
  for (const auto& entry : std::filesystem::directory_iterator(caches)) {
    EXPECT_TRUE(entry.path().filename().string().starts_with("com.vantorium")) << entry.path();
  }
}

TEST(PrecacheNativeAds, TakesAThousandFilesAndShowsWhatIsShown) {
  NativeWorld world;
  json many = json::array();
  for (int number = 0; number < 1000; ++number)
    many.push_back(asset(fmt::format("{{{{base}}}}/a.png?{}", number)));
  for (const char* path : {"/a.png", "/icon.png"}) world.server.setAnswer(path, 200, "image/png", "picture");
  auto ad = world.fetchAd(adWith(many, "{{base}}/icon.png"));
  ASSERT_NE(ad, nullptr);
  EXPECT_EQ(world.error, std::nullopt);
  ASSERT_EQ(ad->assets.size(), 1000U);
  EXPECT_TRUE(std::ranges::all_of(ad->assets, [](const auto& one) { return one->filePath.has_value(); }));
  const auto before = world.requests("/");
  world.show(world.fetchAd(adWith(many, ""), false));
  world.host->loop().runPending();
  EXPECT_LE(world.requests("/") - before, 5U) << "only what is shown is loaded";

  // The files go with the ad.
  const std::filesystem::path file = *ad->assets[0]->filePath;
  EXPECT_TRUE(std::filesystem::exists(file));
  ad = nullptr;
  EXPECT_TRUE(world.host->loop().runUntil([&] {
    world.host->mainQueue()->async([] {});  // the worker that removes them rings no bell
    return !std::filesystem::exists(file.parent_path());
  }));
}

TEST(NativeAdReports, AreSentAsOftenAsTheyAreAskedFor) {
  NativeWorld world;
  world.sdk->reportNativeAdImpression("early");
  ASSERT_TRUE(world.configure());
  VantoriumServerParameter parameter;
  parameter.parameters.emplace()["q"] = "x y";
  const auto ads = world.fetch("native-row");
  ASSERT_EQ(ads.size(), 1U);
  const std::string id = ads[0]->impressionID;
  world.sdk->reportNativeAdImpression(id);
  world.sdk->reportNativeAdImpression(id);
  world.sdk->reportNativeAdClick(id, parameter);
  world.sdk->reportNativeAdClick(id, std::nullopt);
  world.sdk->reportNativeAdVideoStarted(id);
  world.sdk->reportNativeAdVideoEnded(id);
  ASSERT_TRUE(world.awaitEvents("impression", 2));
  ASSERT_TRUE(world.awaitEvents("click", 2));
  ASSERT_TRUE(world.awaitEvents("started"));
  ASSERT_TRUE(world.awaitEvents("finished"));
  EXPECT_TRUE(world.host->loop().runUntil(
      [&] { return world.requests("/api/impressions/" + id + "/click?q=x%2520y&") == 1; }));
  EXPECT_EQ(world.requests("/api/impressions/early"), 0U);
}

}  // namespace
}  // namespace vantorium
