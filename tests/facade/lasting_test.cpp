// What an application hears of a cache that fills, is emptied by others, or is shared by several processes.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include <vantorium/headless.hpp>

#include "support/sdk_world.hpp"

namespace vantorium {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class Lasting : public ::testing::Test {
 protected:
  /// The one campaign that the service has from now on; each film is another one's.
  void serve(const std::string& id) {
    const json campaign{{"campaignId", id},
                        {"impressionId", "impression of " + id},
                        {"hash", "hash of " + id},
                        {"videoUrl", world.server.baseURL() + "/films/" + id + ".mp4"}};
    world.server.setAnswer("/films/" + id + ".mp4", 200, "video/mp4", std::string(1000, 'f'));
    world.server.setAnswer("/api/campaigns", 200, "application/json",
                           json{{"status", "success"}, {"data", {campaign}}}.dump());
  }
  /// Shows what is ready and sees it to its end.
  bool showToItsEnd() {
    const auto before = world.count("show true");
    world.show("p");
    world.host->loop().runPending();
    headless::endVideo(*world.host, headless::VideoEnd::ended);
    headless::tap(*world.host, "back");
    return world.host->loop().runUntil([&] { return world.count("show true") > before; });
  }
  fs::path root() const { return world.sdk->client()->cacheClient.files->root(); }
  /// What a cleaner does, while the SDK may write.
  void removeCache() const {
    std::error_code busy;
    do {
      fs::remove_all(root(), busy);
    } while (busy);
  }
  std::size_t filesOnDisk() const {
    std::size_t files = 0;
    std::error_code none;
    for (const auto& entry : fs::recursive_directory_iterator(root(), none)) files += entry.is_regular_file();
    return files;
  }

  testing::SdkWorld world;
};

TEST_F(Lasting, ThreeHundredShowsOfOnePlacement) {
  ASSERT_TRUE(world.configure());
  for (int show = 0; show < 300; ++show) {
    serve("a-campaign-with-a-rather-long-identifier-" + std::to_string(show));
    ASSERT_TRUE(world.precache("p")) << show << ": " << world.lines.back();
    ASSERT_TRUE(showToItsEnd()) << show << ": " << world.lines.back();
  }
  std::size_t longest = 0;
  for (const auto& request : world.server.requests())
    longest = std::max(longest, request["target"].get<std::string>().size());
  EXPECT_LT(longest, 4096U);
  EXPECT_GT(longest, 2048U) << "the service hears what was shown lately";
  EXPECT_EQ(world.requests("/api/impressions/impression%20of"), 600U) << "begun and finished, each once";
}

TEST_F(Lasting, TheBudgetBoundsWhatIsKept) {
  world.end();
  world.host = std::make_shared<headless::Host>(world.options());
  world.bell.hang(world.host->mainQueue());
  world.lease.emplace(world.host);
  world.sdk = Sdk::make(world.lease->lend());
  ServiceConfiguration configuration;
  configuration.baseURL = world.server.baseURL();
  world.sdk->setServiceConfiguration(configuration);
  ASSERT_FALSE(world.sdk->setCacheSettings({.budget = 5500}));
  ASSERT_TRUE(world.configure());
  EXPECT_TRUE(world.sdk->setCacheSettings({.budget = 1})) << "too late";
  for (int show = 0; show < 40; ++show) {
    serve(std::to_string(show));
    ASSERT_TRUE(world.precache("p") && showToItsEnd()) << show;
  }
  EXPECT_TRUE(world.host->loop().runUntil([&] {
    world.host->mainQueue()->async([] {});  // the worker that removes them rings no bell
    return filesOnDisk() <= 5;
  })) << filesOnDisk();
  serve("39");
  const auto films = world.requests("/films/");
  ASSERT_TRUE(world.precache("p"));
  EXPECT_EQ(world.requests("/films/"), films) << "what was shown last is shared";
}

TEST_F(Lasting, FilesThatSomebodyRemovedAreNoticedBeforeAnyImpression) {
  ASSERT_TRUE(world.configure(true));
  serve("one");
  ASSERT_TRUE(world.precache("p"));
  world.lines.clear();
  removeCache();
  world.show("p");
  EXPECT_TRUE(world.has("show false " + VantoriumError::noPrecachedDataToShow().localizedDescription()));
  EXPECT_EQ(world.events("impression"), 0U);
  ASSERT_TRUE(world.await("didPrecache p")) << "it is fetched again";
  EXPECT_TRUE(world.sdk->isCampaignReady("p"));

  removeCache();
  EXPECT_FALSE(world.sdk->isCampaignReady("p"));
  EXPECT_TRUE(world.host->loop().runUntil([&] { return world.sdk->isCampaignReady("p"); }));
}

TEST_F(Lasting, AFilmThatFailedIsNotSharedWithTheNextCampaign) {
  ASSERT_TRUE(world.configure());
  serve("one");
  ASSERT_TRUE(world.precache("p"));
  world.show("p");
  world.host->loop().runPending();
  headless::endVideo(*world.host, headless::VideoEnd::failed, "no film");
  ASSERT_TRUE(world.await("show false no film"));
  ASSERT_TRUE(world.precache("p"));
  EXPECT_EQ(world.requests("/films/one.mp4"), 2U);
}

TEST_F(Lasting, ASecondProcessLeavesTheFirstOneItsFilm) {
  ASSERT_TRUE(world.configure());
  serve("one");
  ASSERT_TRUE(world.precache("p"));
  world.show("p");
  world.host->loop().runPending();
  const std::string film = world.host->snapshot()["player"]["source"];
  {
    const auto host = std::make_shared<headless::Host>(world.options());
    headless::HostLease lease(host);
    auto second = Sdk::make(lease.lend());
    ServiceConfiguration configuration;
    configuration.baseURL = world.server.baseURL();
    second->setServiceConfiguration(configuration);
    EXPECT_NE(second->client()->cacheClient.files->root(), root());
    second->shutdown();
    second.reset();
    EXPECT_TRUE(lease.awaitReturn());
  }
  EXPECT_TRUE(fs::exists(film));
  EXPECT_EQ(world.host->snapshot()["player"]["source"], film);
}

TEST_F(Lasting, TheFirstPrecachingHasBegunWhenConfigureCompletes) {
  world.server.setInitAnswer(
      {{"status", "success"}, {"token", "t"}, {"placements", {{{"id", "p"}, {"type", "rewarded_video"}}}}});
  world.server.setFaults({{"path", "/api/campaigns"}, {"fault", "neverAnswers"}});
  world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.autoCaching = true; });
  world.sdk->configure("app", std::nullopt, nullptr, [&](bool, const std::optional<Error>&) {
    world.sdk->precacheCampaigns("p", nullptr, world.noting("second"));
  });
  const std::string refusal = VantoriumError::functionInProgress().localizedDescription();
  EXPECT_TRUE(world.await("second false " + refusal));
}

}  // namespace
}  // namespace vantorium
