#include <gtest/gtest.h>

#include <fstream>

#include "archive/zip.hpp"
#include "support/controller_test.hpp"

namespace vantorium {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class PlayableControllerTest : public testing::ControllerTest {
 protected:
  void SetUp() override {
    serve("/pkg/game/p.zip", archiveOf({{"game.js", "play()"}, {"art/boat.svg", "boat"}}));
  }

  void serve(const std::string& path, const std::string& bytes) {
    world_.server.setAnswer(path, 200, "application/zip", bytes);
  }
  std::string archiveOf(const std::map<std::string, std::string>& files) const {
    const testing::TemporaryDirectory folder;
    const fs::path content = folder.path() / "content";
    for (const auto& [name, text] : files) {
      fs::create_directories((content / name).parent_path());
      std::ofstream(content / name) << text;
    }
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(content)) paths.push_back(entry.path());
    EXPECT_FALSE(Zip::zipFiles(paths, folder.path() / "made.zip", std::nullopt));
    return testing::contentOf(folder.path() / "made.zip");
  }
  json playable(const std::string& archive = "/pkg/game/p.zip") const {
    const std::string base = world_.server.baseURL();
    return {{"type", "playable"},
            {"hash", "h"},
            {"tag", "<script src='game/game.js'></script>"},
            {"baseUrl", base + "/pkg/"},
            {"zippedUrl", base + archive}};
  }

  fs::path folderOf(const std::shared_ptr<CampaignController>& controller) {
    return world_.client()->cacheClient->getFolderPath(controller->campaign()->identifier);
  }
};

TEST_F(PlayableControllerTest, UnpacksTheArchiveBesideItselfAndWritesTheEntryPage) {
  const auto one = controller(playable());
  ASSERT_EQ(precache(one), success_);
  const fs::path folder = folderOf(one);
  EXPECT_EQ(testing::contentOf(folder / "game/game.js"), "play()");
  EXPECT_EQ(testing::contentOf(folder / "game/art/boat.svg"), "boat");
  EXPECT_EQ(world_.client()->cacheClient->getHTMLPath(one->campaign()->identifier),
            (folder / "index.html").string());
  EXPECT_EQ(testing::contentOf(folder / "index.html"),
            "<html><body><script src='game/game.js'></script></body></html>");
  const std::string log = world_.context->log();
  EXPECT_NE(log.find(" : Trying to precache HTML files for placement id: p\n"), std::string::npos);
  EXPECT_NE(log.find(" : HTML files successufully downloaded and saved to disk for placement id: p\n"),
            std::string::npos);
  EXPECT_TRUE(world_.reports().empty());

  // Another campaign of the same creative takes the files that are there, as long as they are.
  world_.client()->cacheClient->add(one->campaign(), "another placement");
  const auto requests = world_.requests().size();
  const auto second = controller(playable());
  ASSERT_EQ(precache(second), success_);
  EXPECT_EQ(world_.requests().size(), requests);
  EXPECT_EQ(folderOf(second), folder);
  fs::remove_all(world_.cacheRoot());
  ASSERT_EQ(precache(controller(playable())), success_);
  EXPECT_EQ(world_.requests().size(), requests + 1);
}

TEST_F(PlayableControllerTest, TheEntryPageTakesThePlaceOfTheArchivesOwn) {
  serve("/p.zip", archiveOf({{"index.html", "theirs"}, {"about.html", "about"}}));
  json campaign = playable("/p.zip");
  for (const std::string& base : {std::string("/"), std::string(), std::string("not a URL")}) {
    campaign["baseUrl"] = base.starts_with('/') ? world_.server.baseURL() + base : base;
    campaign["hash"] = "hash of " + base;
    const auto one = controller(campaign);
    ASSERT_EQ(precache(one), success_) << base;
    EXPECT_EQ(world_.client()->cacheClient->getHTMLPath(one->campaign()->identifier),
              (folderOf(one) / "index.html").string());
    EXPECT_EQ(testing::contentOf(folderOf(one) / "index.html").substr(0, 12), "<html><body>");
    EXPECT_EQ(testing::contentOf(folderOf(one) / "about.html"), "about");
  }
}

TEST_F(PlayableControllerTest, TriesADownloadTwiceMoreOnTheMainQueue) {
  world_.server.setFaults({{"path", "/pkg/"}, {"fault", "connectionReset"}});
  const auto one = controller(playable());
  Outcome outcome;
  std::thread::id thread;
  one->precache(DispatchQueue::serial("test"), [&, done = outcome.completion()](bool success, auto error) {
    thread = std::this_thread::get_id();
    done(success, error);
  });
  world_.host->loop().runUntil([&] { return outcome.isThere(); });
  EXPECT_EQ(outcome.get(), (Result{false, VantoriumError::internalError("Can't precache or save files.")}));
  EXPECT_EQ(thread, std::this_thread::get_id());
  EXPECT_EQ(world_.requests("/pkg/").size(), 3U);

  world_.server.setFaults({{"path", "/pkg/"}, {"fault", "connectionReset"}, {"times", 2}});
  EXPECT_EQ(precache(controller(playable())), success_);

  const auto [success, error] = precache(controller(playable("/pkg/../../../escaped.zip")));
  EXPECT_FALSE(success);
  EXPECT_NE(error->errorMessage().find("Can't precache or save files."), std::string::npos);
}

TEST_F(PlayableControllerTest, ReportsWhatItCannotUnpackOrWriteAndDoesNotTryAgain) {
  serve("/pkg/broken.zip", "this is no archive");
  serve("/pkg/game.ZIP", archiveOf({{"a", "b"}}));
  serve("/blocked.zip", archiveOf({{"index.html/page", "in the way"}}));
  const std::map<std::string, std::string> expected{
      {"/pkg/broken.zip", "Failed to unzip file."},
      {"/pkg/game.ZIP", "File not found."},
      {"/blocked.zip", "index.html"},
  };
  for (const auto& [path, text] : expected) {
    const auto reports = world_.reports().size();
    Outcome outcome;
    const auto one = controller(playable(path));
    one->precache(DispatchQueue::serial("test"), outcome.completion());
    const auto [success, error] = outcome.get();  // although nobody runs the main queue
    EXPECT_FALSE(success) << path;
    ASSERT_TRUE(error) << path;
    EXPECT_NE(error->errorMessage().find(text), std::string::npos) << error->errorMessage();
    EXPECT_EQ(world_.awaitReports(reports + 1).size(), reports + 1);
    EXPECT_NE(world_.reports().back().find(text), std::string::npos);
    EXPECT_EQ(world_.requests(path).size(), 1U);
    EXPECT_FALSE(fs::exists(folderOf(one))) << "nothing of it is left";
  }
}

TEST_F(PlayableControllerTest, EndsInSilenceWhenItsOwnerDropsIt) {
  world_.server.setFaults({{"path", "/pkg/"}, {"fault", "neverAnswers"}});
  auto one = controller(playable());
  one->precache(nullptr, [](bool, auto) { FAIL() << "nobody is there to hear this"; });
  world_.server.waitForRequest([](const json& request) { return request["path"] == "/pkg/game/p.zip"; });
  one.reset();
  world_.client()->shutdown();
  world_.host->loop().runPending();
}

}  // namespace
}  // namespace vantorium
