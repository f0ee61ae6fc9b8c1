#include "cache/inventory.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>

#include "support/temporary_directory.hpp"

namespace vantorium {
namespace {

using nlohmann::json;

class InventoryTest : public ::testing::Test {
 protected:
  static constexpr Seconds lifetime{100};

  static Date at(double seconds) {
    return Date(std::chrono::duration_cast<Date::duration>(Seconds{1e9 + seconds}));
  }
  /// A campaign whose film is in the folder.
  ReadyCampaign campaign(const std::string& id, double precachedAt = 0) {
    auto creative = std::make_shared<Creative>();
    creative->film = std::make_shared<StoredPath>(film(id + (films_.insert(id).second ? "" : "again")));
    std::ofstream(creative->film->path()) << "film";
    return {std::make_shared<Campaign>(json{{"campaignId", id}}), creative, at(precachedAt)};
  }
  std::string film(const std::string& id) const { return (folder_.path() / id).string(); }
  std::string next() {
    const auto next = inventory_.getNextCampaign("p", now_).campaign;
    return next ? next->campaign->campaignID : "none";
  }
  std::string take() {
    const auto next = inventory_.takeNextCampaign("p", now_).campaign;
    return next ? next->campaign->campaignID : "none";
  }

  testing::TemporaryDirectory folder_;
  std::set<std::string> films_;
  Inventory inventory_{lifetime};
  Date now_ = at(0);
};

TEST_F(InventoryTest, HandsCampaignsOutInOrderAndForgetsThemThen) {
  for (const char* id : {"a", "b"}) inventory_.add(campaign(id), "p");
  inventory_.add(campaign("c"), "q");
  EXPECT_EQ(inventory_.getNumberOfCampaigns("p"), 2U);
  EXPECT_EQ(next(), "a");
  for (const char* id : {"a", "b", "none"}) EXPECT_EQ(take(), id);
  EXPECT_EQ(inventory_.getNumberOfCampaigns("p") + inventory_.getNumberOfCampaigns("unknown"), 0U);
  EXPECT_EQ(inventory_.getNumberOfCampaigns("q"), 1U);
}

TEST_F(InventoryTest, TellsTheServiceEachIDOnceThoseNotShownFirst) {
  for (const char* id : {"a", "b", "a", "c"}) inventory_.add(campaign(id), "p");
  take();
  take();
  EXPECT_EQ(inventory_.campaignIDs("p"), (std::vector<std::string>{"a", "c", "b"}));
  take();
  EXPECT_EQ(inventory_.campaignIDs("p"), (std::vector<std::string>{"c", "a", "b"})) << "the latest first";
  for (int i = 0; i < 1000; ++i) {
    inventory_.add(campaign(std::to_string(i)), "p");
    EXPECT_EQ(take(), i == 0 ? "c" : std::to_string(i - 1));
  }
  const auto ids = inventory_.campaignIDs("p");
  EXPECT_EQ(ids.front() + " " + ids[1], "999 998");
  EXPECT_LT(ids.size(), 200U) << "what was shown long ago is forgotten";
}

TEST_F(InventoryTest, PassesOverCampaignsWhoseFilesAreGone) {
  for (const char* id : {"a", "b", "c"}) inventory_.add(campaign(id), "p");
  std::filesystem::remove(film("a"));
  std::filesystem::remove(film("c"));
  EXPECT_EQ(next(), "b");
  EXPECT_EQ(inventory_.getNumberOfCampaigns("p"), 1U);
  std::filesystem::remove(film("b"));
  EXPECT_TRUE(inventory_.takeNextCampaign("p", now_).hasLost);
  EXPECT_FALSE(inventory_.takeNextCampaign("p", now_).hasLost) << "it is said once";
}

TEST_F(InventoryTest, KeepsAStaleCampaignUntilThereIsANewerOne) {
  inventory_.add(campaign("a", 0), "p");
  EXPECT_EQ(inventory_.getNumberOfFreshCampaigns("p", at(100)), 1U);
  EXPECT_EQ(inventory_.getNumberOfFreshCampaigns("p", at(101)), 0U);
  EXPECT_EQ(next(), "a");
  inventory_.add(campaign("b", 101), "p");
  EXPECT_EQ(next(), "b");
  EXPECT_EQ(inventory_.getNumberOfCampaigns("p"), 1U);
  inventory_.add(campaign("c", 150), "p");
  EXPECT_EQ(inventory_.getNumberOfCampaigns("p"), 2U);
  now_ = at(210);
  EXPECT_EQ(next(), "c") << "the other one has waited for too long";
  now_ = at(300);
  EXPECT_EQ(next(), "b") << "all have";
}

}  // namespace
}  // namespace vantorium
