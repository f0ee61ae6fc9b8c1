#include <gtest/gtest.h>

#include <fstream>

#include "support/archive.hpp"
#include "support/controller_test.hpp"

namespace vantorium {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class PlayableControllerTest : public testing::ControllerTest {
 protected:
  void SetUp() override {
    serve("/pkg/game/p.zip", testing::archiveOf({{"game.js", "play()"}, {"art/boat.svg", "boat"}}));
  }

  void serve(const std::string& path, const std::string& bytes) {
    world_.server.setAnswer(path, 200, "application/zip", bytes);
  }
  json playable(const std::string& archive = "/pkg/game/p.zip") const {
    const std::string base = world_.server.baseURL();
    return {{"type", "playable"},
            {"hash", "h"},
            {"tag", "<script src='game/game.js'></script>"},
            {"baseUrl", base + "/pkg/"},
            {"zippedUrl", base + archive}};
  }
};

TEST_F(PlayableControllerTest, UnpacksTheArchiveBesideItselfAndWritesTheEntryPage) {
  const auto one = precache(playable());
  ASSERT_TRUE(one) << textOf(one);
  const fs::path folder = (*one)->folder->path();
  EXPECT_EQ(testing::contentOf(folder / "game/game.js"), "play()");
  EXPECT_EQ(testing::contentOf(folder / "game/art/boat.svg"), "boat");
  EXPECT_EQ((*one)->page, (folder / "index.html").string());
  EXPECT_EQ((*one)->film, nullptr);
  EXPECT_EQ(testing::contentOf(folder / "index.html"),
            "<html><body><script src='game/game.js'></script></body></html>");
  const std::string log = world_.context->log();
  EXPECT_NE(log.find(" : Trying to precache HTML files for placement id: p\n"), std::string::npos);
  EXPECT_NE(log.find(" : HTML files successufully downloaded and saved to disk for placement id: p\n"),
            std::string::npos);
  EXPECT_TRUE(world_.reports().empty());

  // Another campaign of the same creative takes the files that are there, as long as they are.
  const auto requests = world_.requests().size();
  EXPECT_EQ(*precache(playable()), *one);
  EXPECT_EQ(world_.requests().size(), requests);
  fs::remove_all(world_.cacheRoot());
  ASSERT_TRUE(precache(playable()));
  EXPECT_EQ(world_.requests().size(), requests + 1);
}

TEST_F(PlayableControllerTest, TheEntryPageTakesThePlaceOfTheArchivesOwn) {
  serve("/p.zip", testing::archiveOf({{"index.html", "theirs"}, {"about.html", "about"}}));
  json campaign = playable("/p.zip");
  for (const std::string& base : {std::string("/"), std::string(), std::string("not a URL")}) {
    campaign["baseUrl"] = base.starts_with('/') ? world_.server.baseURL() + base : base;
    const auto one = precache(campaign);
    ASSERT_TRUE(one) << base << textOf(one);
    const fs::path folder = (*one)->folder->path();
    EXPECT_EQ((*one)->page, (folder / "index.html").string());
    EXPECT_EQ(testing::contentOf(folder / "index.html").substr(0, 12), "<html><body>");
    EXPECT_EQ(testing::contentOf(folder / "about.html"), "about");
  }
}

TEST_F(PlayableControllerTest, TriesADownloadTwiceMoreOnTheMainQueue) {
  world_.server.setFaults({{"path", "/pkg/"}, {"fault", "connectionReset"}});
  Outcome outcome;
  std::thread::id thread;
  controller(playable())->precache(DispatchQueue::serial("test"), [&, done = outcome.completion()](auto end) {
    thread = std::this_thread::get_id();
    done(std::move(end));
  });
  world_.host->loop().runUntil([&] { return outcome.isThere(); });
  EXPECT_TRUE(textOf(std::get<0>(outcome.get())).starts_with("Can't precache or save files. "));
  EXPECT_EQ(thread, std::this_thread::get_id());
  EXPECT_EQ(world_.requests("/pkg/").size(), 3U);

  world_.server.setFaults({{"path", "/pkg/"}, {"fault", "connectionReset"}, {"times", 2}});
  EXPECT_TRUE(precache(playable()));
  for (const int status : {404, 503, 204}) {
    json campaign = playable("/pkg/gone.zip");
    campaign["hash"] = "";
    world_.server.setAnswer("/pkg/gone.zip", status, "text/html", status == 204 ? "" : "an error page");
    const std::string text = textOf(precache(campaign));
    EXPECT_NE(text.find(std::to_string(status)), std::string::npos) << text;
    EXPECT_NE(text.find("/pkg/gone.zip"), std::string::npos) << text;
  }
  EXPECT_NE(textOf(precache(playable("/pkg/../../../escaped.zip"))).find("\"zippedUrl\""), std::string::npos);
}

TEST_F(PlayableControllerTest, ReportsWhatItCannotUnpackOrWriteAndDoesNotTryAgain) {
  serve("/pkg/broken.zip", "this is no archive");
  serve("/pkg/game.ZIP", testing::archiveOf({{"a", "b"}}));
  serve("/blocked.zip", testing::archiveOf({{"index.html/page", "in the way"}}));
  const std::map<std::string, std::string> expected{
      {"/pkg/broken.zip", "Failed to unzip file."},
      {"/pkg/game.ZIP", "File not found."},
      {"/blocked.zip", "index.html"},
  };
  for (const auto& [path, text] : expected) {
    const auto reports = world_.reports().size();
    Outcome outcome;
    controller(playable(path))->precache(DispatchQueue::serial("test"), outcome.completion());
    const auto creative = std::get<0>(outcome.get());  // although nobody runs the main queue
    ASSERT_FALSE(creative) << path;
    EXPECT_NE(creative.error()->errorMessage().find(text), std::string::npos)
        << creative.error()->errorMessage();
    EXPECT_EQ(world_.awaitReports(reports + 1).size(), reports + 1);
    EXPECT_NE(world_.reports().back().find(text), std::string::npos);
    EXPECT_EQ(world_.requests(path).size(), 1U);
    EXPECT_TRUE(awaitEmptyCache()) << "nothing of it is left";
  }
}

}  // namespace
}  // namespace vantorium
