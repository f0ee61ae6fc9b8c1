#include <gtest/gtest.h>

#include <fstream>

#include "precache/end_card_page.hpp"
#include "support/controller_test.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
namespace fs = std::filesystem;

class CampaignControllerTest : public testing::ControllerTest {
 protected:
  void SetUp() override {
    for (const auto& [path, body] :
         std::map<std::string, std::string>{{"/v/film.mp4", std::string(2500, 'v')},
                                            {"/static/html/card.html", page()},
                                            {"/static/img/a.png", "png"},
                                            {"/offer.svg", "svg"}})
      world_.server.setAnswer(path, 200, "text/plain", body);
  }
  std::string base() const { return world_.server.baseURL(); }
  std::string page() const {
    return "<img src='" + base() + "/static/img/a.png'><img src='{{customImage}}'>";
  }
  json video() const { return {{"hash", "h"}, {"videoUrl", base() + "/v/film.mp4"}}; }
  json videoWithEndCard() const {
    json campaign = video();
    campaign["endAssets"] =
        json::array({json::array({base() + "/static/img/a.png"}), json::array({"ignored"})});
    campaign["endUrl"] = {base() + "/static/html/card.html", "ignored"};
    campaign["customImage"] = base() + "/offer.svg";
    return campaign;
  }

  /// Until the file system would write a later time, which is coarser than the clock.
  void awaitLaterTime(fs::file_time_type than) const {
    const fs::path probe = world_.cacheRoot() / "probe";
    do {
      std::ofstream(probe) << "now";
    } while (fs::last_write_time(probe) <= than);
    fs::remove(probe);
  }
  std::vector<std::string> log() const {
    std::vector<std::string> lines;
    std::istringstream text(world_.context->log());
    for (std::string line; std::getline(text, line);) lines.push_back(line.substr(line.find(" : ") + 3));
    return lines;
  }
};

TEST_F(CampaignControllerTest, BringsVideoAndEndCardToDisk) {
  auto creative = precache(videoWithEndCard());
  ASSERT_TRUE(creative) << textOf(creative);
  const fs::path root = world_.cacheRoot();
  const std::string id = (*creative)->record->identifier;
  EXPECT_EQ((*creative)->film->path(), root / (id + ".mp4"));
  EXPECT_EQ(fs::file_size((*creative)->film->path()), 2500U);
  EXPECT_EQ((*creative)->folder->path(), root / id);
  EXPECT_EQ((*creative)->page, (root / id / "static/html/card.html").string());
  EXPECT_EQ(testing::contentOf(*(*creative)->page), "<img src='../img/a.png'><img src='./offer.svg'>");
  EXPECT_EQ(testing::contentOf(root / id / "static/img/a.png"), "png");
  EXPECT_EQ((*creative)->answers.size(), 4U);
  EXPECT_EQ((*creative)->filmBytes, 2500U);
  EXPECT_GT((*creative)->folderBytes, 0U);
  EXPECT_EQ(log(), (std::vector<std::string>{
                       "Trying to precache video and endcard for placement id: p",
                       "Video successufully downloaded. Size 2KB  Placement id: p",
                       "Video successufully saved to disk for placement id: p",
                       "End card HTML files successufully downloaded and saved to disk for placement id: p",
                   }));
  EXPECT_TRUE(world_.reports().empty());
  EXPECT_TRUE((*creative)->isOnDisk());
  awaitLaterTime((*creative)->directories.front().changedAt);
  fs::remove(root / id / "static/img/a.png");
  EXPECT_FALSE((*creative)->isOnDisk()) << "somebody removed a file of the page";
  creative = VantoriumError::internalError();
  EXPECT_TRUE(awaitEmptyCache()) << "its files go with it";
}

TEST_F(CampaignControllerTest, OpensThePageThatTheRecordNamesOrTheOneNearestToTheTop) {
  for (const char* path : {"/b/index.html", "/b/a.html", "/c.htm", "/card"})
    world_.server.setAnswer(path, 200, "text/html", "page");
  json campaign = videoWithEndCard();
  campaign.erase("hash");
  const auto opened = [&](const std::string& endURL, const std::vector<std::string>& assets) {
    std::vector<std::string> urls;
    for (const auto& asset : assets) urls.push_back(base() + asset);
    campaign["endAssets"] = json::array({urls});
    campaign["endUrl"] = {base() + endURL};
    const auto creative = precache(campaign);
    const auto page = creative ? (*creative)->page : std::nullopt;
    return page ? page->substr((*creative)->folder->path().size()) : "none";
  };
  EXPECT_EQ(opened("/b/a.html", {"/c.htm"}), "/b/a.html");
  EXPECT_EQ(opened("/card", {"/b/a.html", "/b/index.html", "/c.htm"}), "/c.htm");
  EXPECT_EQ(opened("/card", {"/b/a.html", "/b/index.html"}), "/b/index.html");
  EXPECT_EQ(opened("/card", {"/offer.svg"}), "none");
}

TEST_F(CampaignControllerTest, SharesWhatAgrees) {
  const auto first = precache(videoWithEndCard());
  ASSERT_TRUE(first);
  const auto requests = world_.requests().size();
  Outcome outcome;
  controller(videoWithEndCard())->precache(nullptr, outcome.completion());
  ASSERT_TRUE(outcome.isThere()) << "completes at once";
  EXPECT_EQ(*std::get<0>(outcome.get()), *first);
  EXPECT_EQ(world_.requests().size(), requests);

  // Another card: the film is shared, the card is fetched.
  json campaign = videoWithEndCard();
  campaign["tag"] = "another";
  const auto second = precache(campaign);
  ASSERT_TRUE(second) << textOf(second);
  EXPECT_EQ((*second)->film, (*first)->film);
  EXPECT_NE((*second)->folder, (*first)->folder);
  EXPECT_EQ(world_.requests("/v/film.mp4").size(), 1U);

  // Somebody emptied the folder: it takes a download again.
  fs::remove_all(world_.cacheRoot());
  ASSERT_TRUE(precache(videoWithEndCard()));
  EXPECT_EQ(world_.requests("/v/film.mp4").size(), 2U);
}

TEST_F(CampaignControllerTest, DoesNotTakeCampaignsWithoutHashForTheSame) {
  json campaign = video();
  campaign.erase("hash");
  const auto first = precache(campaign);
  EXPECT_TRUE(first && precache(campaign));
  EXPECT_EQ(world_.requests("/v/film.mp4").size(), 2U);
}

TEST_F(CampaignControllerTest, TriesTwiceMoreOnTheMainQueueWhatIsMissing) {
  world_.server.setFaults({{"path", "/v/"}, {"fault", "bodyCutShort"}});
  Outcome outcome;
  std::thread::id thread;
  controller(videoWithEndCard())
      ->precache(DispatchQueue::serial("test"), [&, done = outcome.completion()](auto end) {
        thread = std::this_thread::get_id();
        done(std::move(end));
      });
  world_.host->loop().runUntil([&] { return outcome.isThere(); });
  EXPECT_EQ(std::get<0>(outcome.get()).error()->domain(), "curl");
  EXPECT_EQ(thread, std::this_thread::get_id());
  EXPECT_EQ(world_.requests("/v/").size(), 3U);
  EXPECT_EQ(world_.requests("/offer.svg").size(), 1U) << "what has come is not fetched again";
  EXPECT_EQ(world_.awaitReports(3).size(), 3U);
  EXPECT_TRUE(awaitEmptyCache()) << "nothing of it stays";

  world_.server.setFaults({{"path", "/v/"}, {"fault", "bodyCutShort"}, {"times", 2}});
  EXPECT_TRUE(precache(video()));
}

TEST_F(CampaignControllerTest, TakesNoErrorPageForAFile) {
  const std::map<std::string, std::string> files{
      {"/v/film.mp4", "film"}, {"/static/html/card.html", "page"}, {"/static/img/a.png", "asset"}};
  for (const auto& [path, what] : files) {
    for (const int status : {404, 503, 204}) {
      SetUp();
      const bool isTaken = status == 204 && what == "asset";
      world_.server.setAnswer(path, status, "text/html", status == 204 ? "" : "<h1>an error page</h1>");
      const auto before = world_.requests(path).size();
      const auto creative = precache(videoWithEndCard());
      EXPECT_EQ(static_cast<bool>(creative), isTaken) << what << " " << status;
      EXPECT_EQ(world_.requests(path).size() - before, isTaken ? 1U : 3U) << what << " " << status;
      if (creative) continue;
      EXPECT_NE(textOf(creative).find(std::to_string(status)), std::string::npos) << textOf(creative);
      EXPECT_NE(textOf(creative).find(base() + path), std::string::npos) << textOf(creative);
      EXPECT_TRUE(awaitEmptyCache());
    }
  }
}

TEST_F(CampaignControllerTest, CompletesOnTheCallersQueueAtFirst) {
  Outcome outcome;
  controller(video())->precache(DispatchQueue::serial("test"), outcome.completion());
  EXPECT_TRUE(std::get<0>(outcome.get())) << "although nobody runs the main queue";
}

TEST_F(CampaignControllerTest, RefusesAtOnceWhatNoTryCanMendAndNamesTheField) {
  const auto refusalOf = [this](const char* field, const json& value) {
    json campaign = videoWithEndCard();
    campaign[field] = value;
    const auto creative = precache(campaign);
    EXPECT_NE(textOf(creative).find(std::string("\"") + field + "\""), std::string::npos) << textOf(creative);
    return textOf(creative);
  };
  EXPECT_NE(refusalOf("videoUrl", "").find("missing or empty"), std::string::npos);
  EXPECT_NE(refusalOf("customImage", "").find("missing or empty"), std::string::npos);
  EXPECT_NE(refusalOf("customImage", base() + "/../../escaped").find("leaves the folder"), std::string::npos);
  EXPECT_NE(refusalOf("endUrl", {base() + "/card/"}).find("names no file"), std::string::npos);
  EXPECT_NE(refusalOf("endAssets", {{""}, json::array()}).find("\"endAssets\""), std::string::npos);

  json campaign = videoWithEndCard();
  campaign["endAssets"] = json::array({json(std::vector<std::string>(501, base() + "/static/img/a.png"))});
  EXPECT_NE(textOf(precache(campaign)).find("501 files"), std::string::npos);
  EXPECT_TRUE(world_.requests().empty()) << "for nothing";
  // A campaign without assets for an end card has none.
  campaign["endAssets"] = json::array();
  EXPECT_TRUE(precache(campaign));
}

TEST_F(CampaignControllerTest, FailsWithAFileThatCannotBeWritten) {
  fs::create_directories(world_.cacheRoot().parent_path());
  json campaign = video();
  campaign["videoUrl"] = base() + "/v/film." + std::string(300, 'm');
  world_.server.setAnswer("/v/film." + std::string(300, 'm'), 200, "video/mp4", "film");
  EXPECT_NE(textOf(precache(campaign)).find("File name too long"), std::string::npos);
  EXPECT_TRUE(awaitEmptyCache());
}

TEST_F(CampaignControllerTest, LeavesAPageThatIsTooLargeAsItIs) {
  const std::string large = page() + std::string(largestPage, ' ');
  world_.server.setAnswer("/static/html/card.html", 200, "text/html", large);
  const auto creative = precache(videoWithEndCard());
  ASSERT_TRUE(creative) << textOf(creative);
  EXPECT_EQ(testing::contentOf(*(*creative)->page), large);
  EXPECT_EQ(world_.reports().size(), 1U);
}

TEST(EndCardPageTest, RefersToLocalCopies) {
  const auto local = [](const std::string& text, const std::vector<std::string>& urls,
                        const std::string& image = "") {
    return pageWithRelativeAssets(text, urls, image).value_or("none");
  };
  EXPECT_EQ(local("a https://h/x/a.png?v=1 b", {"https://h/x/a.png"}), "a ./x/a.png?v=1 b");
  EXPECT_EQ(local("https://h/static/img/a.png", {"https://h/static/img/a.png"}), "../img/a.png");
  EXPECT_EQ(local("{{customImage}}{{customImage}}", {"https://h/i"}, "https://h/i"), "./i./i");
  EXPECT_EQ(local("untouched", {"", "no url"}), "untouched");
  const std::string long1(100'000, 'x');
  std::string bomb;
  for (int i = 0; i < 1000; ++i) bomb += "{{customImage}}";
  EXPECT_EQ(local(bomb, {}, long1), "none");
  EXPECT_EQ(local(std::string(largestPage + 1, ' '), {}), "none");
}

}  // namespace
}  // namespace vantorium
