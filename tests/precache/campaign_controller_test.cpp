#include <gtest/gtest.h>

#include "precache/end_card_page.hpp"
#include "support/controller_test.hpp"

namespace vantorium {
namespace {

using nlohmann::json;

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

  std::vector<std::string> log() const {
    std::vector<std::string> lines;
    std::istringstream text(world_.context->log());
    for (std::string line; std::getline(text, line);) lines.push_back(line.substr(line.find(" : ") + 3));
    return lines;
  }
};

TEST_F(CampaignControllerTest, BringsVideoAndEndCardToDisk) {
  const auto one = controller(videoWithEndCard());
  ASSERT_EQ(precache(one), success_);
  const std::string& id = one->campaign()->identifier;
  CacheClient& cache = *world_.client()->cacheClient;
  EXPECT_EQ(cache.getFilePath(id), (world_.cacheRoot() / (id + ".mp4")).string());
  EXPECT_EQ(std::filesystem::file_size(*cache.getFilePath(id)), 2500U);
  ASSERT_EQ(cache.getHTMLPath(id), (world_.cacheRoot() / id / "static/html/card.html").string());
  EXPECT_EQ(testing::contentOf(*cache.getHTMLPath(id)), "<img src='../img/a.png'><img src='./offer.svg'>");
  EXPECT_EQ(testing::contentOf(world_.cacheRoot() / id / "static/img/a.png"), "png");

  auto lines = log();
  EXPECT_EQ(lines.at(0), "Trying to precache video and endcard for placement id: p");
  std::sort(lines.begin() + 1, lines.end());  // the branches run at the same time
  EXPECT_EQ(std::vector(lines.begin() + 1, lines.end()),
            (std::vector<std::string>{
                "End card HTML files successufully downloaded and saved to disk for placement id: p",
                "Video successufully downloaded. Size 2KB  Placement id: p",
                "Video successufully saved to disk for placement id: p",
            }));
  EXPECT_TRUE(world_.reports().empty());
}

TEST_F(CampaignControllerTest, SharesTheFilesOfTheSameCreative) {
  const auto first = controller(videoWithEndCard());
  ASSERT_EQ(precache(first), success_);
  world_.client()->cacheClient->add(first->campaign(), "another placement");
  const auto requests = world_.requests().size();

  const auto second = controller({{"hash", "h"}, {"videoUrl", "nowhere"}});
  Outcome outcome;
  second->precache(nullptr, outcome.completion());
  ASSERT_TRUE(outcome.isThere()) << "completes at once";
  EXPECT_EQ(outcome.get(), success_);
  EXPECT_EQ(world_.requests().size(), requests);
  CacheClient& cache = *world_.client()->cacheClient;
  for (const auto& lookUp : {&CacheClient::getFilePath, &CacheClient::getHTMLPath}) {
    EXPECT_TRUE((cache.*lookUp)(second->campaign()->identifier));
    EXPECT_EQ((cache.*lookUp)(second->campaign()->identifier),
              (cache.*lookUp)(first->campaign()->identifier));
  }

  // Somebody emptied the folder: it takes a download again.
  std::filesystem::remove_all(world_.cacheRoot());
  const auto third = controller(video());
  EXPECT_EQ(precache(third), success_);
  EXPECT_EQ(testing::contentOf(*cache.getFilePath(third->campaign()->identifier)).size(), 2500U);
}

TEST_F(CampaignControllerTest, DoesNotTakeCampaignsWithoutHashForTheSame) {
  world_.client()->cacheClient->add(std::make_shared<Campaign>(json::object()), "p");
  json campaign = video();
  campaign.erase("hash");
  EXPECT_EQ(precache(controller(campaign)), success_);
  EXPECT_EQ(world_.requests("/v/film.mp4").size(), 1U);
}

TEST_F(CampaignControllerTest, TriesTwiceMoreOnTheMainQueue) {
  world_.server.setFaults({{"path", "/v/"}, {"fault", "connectionReset"}});
  const auto queue = DispatchQueue::serial("test");
  const auto one = controller(video());
  Outcome outcome;
  std::thread::id thread;
  one->precache(queue, [&, done = outcome.completion()](bool success, auto error) {
    thread = std::this_thread::get_id();
    done(success, error);
  });
  world_.host->loop().runUntil([&] { return outcome.isThere(); });
  const auto [success, error] = outcome.get();
  EXPECT_FALSE(success);
  EXPECT_EQ(error->domain(), "curl");
  EXPECT_EQ(thread, std::this_thread::get_id());
  EXPECT_EQ(world_.requests("/v/").size(), 3U);
  EXPECT_EQ(world_.reports().size(), 3U);

  world_.server.setFaults({{"path", "/v/"}, {"fault", "connectionReset"}, {"times", 2}});
  EXPECT_EQ(precache(controller(video())), success_);
}

TEST_F(CampaignControllerTest, CompletesOnTheCallersQueueAtFirst) {
  const auto one = controller(video());
  Outcome outcome;
  one->precache(DispatchQueue::serial("test"), outcome.completion());
  EXPECT_EQ(outcome.get(), success_) << "although nobody runs the main queue";
}

TEST_F(CampaignControllerTest, FailsWithTheEndCard) {
  json campaign = videoWithEndCard();
  campaign["customImage"] = base() + "/../../escaped";
  const auto [success, error] = precache(controller(campaign));
  EXPECT_FALSE(success);
  EXPECT_NE(error->errorMessage().find("leaves the folder"), std::string::npos);

  // A campaign without assets for an end card has none.
  campaign["endAssets"] = json::array();
  EXPECT_EQ(precache(controller(campaign)), success_);
}

TEST_F(CampaignControllerTest, RefusesWhatCannotBeFetched) {
  EXPECT_EQ(precache(controller({{"videoUrl", ""}})), (Result{false, VantoriumError::internalError()}));

  json campaign = videoWithEndCard();
  campaign["endAssets"] = json::array({json(std::vector<std::string>(501, base() + "/static/img/a.png"))});
  const auto [isTaken, flaw] = precache(controller(campaign));
  EXPECT_FALSE(isTaken);
  EXPECT_NE(flaw->errorMessage().find("501 files"), std::string::npos);
  EXPECT_TRUE(world_.requests().empty()) << "for nothing";
}

TEST_F(CampaignControllerTest, LeavesAPageThatIsTooLargeAsItIs) {
  const std::string large = page() + std::string(largestPage, ' ');
  world_.server.setAnswer("/static/html/card.html", 200, "text/html", large);
  const auto one = controller(videoWithEndCard());
  EXPECT_EQ(precache(one), success_);
  EXPECT_EQ(testing::contentOf(*world_.client()->cacheClient->getHTMLPath(one->campaign()->identifier)),
            large);
  EXPECT_EQ(world_.reports().size(), 1U);
}

TEST_F(CampaignControllerTest, EndsInSilenceWhenItsOwnerDropsIt) {
  world_.server.setFaults({{"path", "/v/"}, {"fault", "neverAnswers"}});
  auto one = controller(videoWithEndCard());
  one->precache(nullptr, [](bool, auto) { FAIL() << "nobody is there to hear this"; });
  world_.server.waitForRequest([](const json& request) { return request["path"] == "/v/film.mp4"; });
  one.reset();
  world_.client()->shutdown();
  world_.host->loop().runPending();
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
