#include "cache/cache_client.hpp"

#include <gtest/gtest.h>

#include "support/service_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
namespace fs = std::filesystem;

class CacheClientTest : public ::testing::Test {
 protected:
  using Batch = std::pair<bool, std::vector<std::shared_ptr<File>>>;

  CacheClient& cache() { return *world_.client()->cacheClient; }

  static std::shared_ptr<Campaign> campaign(const std::string& hash = "") {
    return std::make_shared<Campaign>(json{{"hash", hash}});
  }
  void serve(const std::string& path, const std::string& body) {
    world_.server.setAnswer(path, 200, "text/plain", body);
  }
  Batch precache(const std::vector<std::string>& paths, const std::string& pathToRemove = "") {
    std::vector<std::string> urls;
    for (const auto& path : paths)
      urls.push_back(path.starts_with('/') ? world_.server.baseURL() + path : path);
    testing::Outcome<bool, std::vector<std::shared_ptr<File>>> outcome;
    cache().precacheFiles("ID", urls, pathToRemove, world_.client()->fileDownloader, outcome.completion());
    const auto [success, files] = outcome.get();
    return {success, files};
  }
  void write(const fs::path& path, const std::string& content = "x") const {
    fs::create_directories((world_.cacheRoot() / path).parent_path());
    std::ofstream(world_.cacheRoot() / path) << content;
  }

  testing::ServiceWorld world_;
};

TEST_F(CacheClientTest, KeepsCampaignsInOrderAndSkipsThoseShown) {
  const auto first = campaign("h1");
  const auto second = campaign("h2");
  cache().add(first, "p");
  cache().add(second, "p");
  cache().add(campaign("h2"), "q");
  EXPECT_EQ(cache().getNumberOfCampaigns("p"), 2);
  EXPECT_EQ(cache().getNextCampaign("p"), first);
  first->isUsed = true;
  EXPECT_EQ(cache().getNumberOfCampaigns("p"), 1);
  EXPECT_EQ(cache().getNextCampaign("p"), second);
  EXPECT_EQ(cache().getCampaigns("p"), (std::vector{first, second}));
  EXPECT_EQ(cache().getCampaign("h1"), first) << "shown ones are found too";
  EXPECT_EQ(cache().getCampaign("h2"), second);

  second->isUsed = true;
  EXPECT_FALSE(cache().hasNextCampaign("p"));
  cache().add(campaign(), "p");
  EXPECT_TRUE(cache().hasNextCampaign("p"));
  EXPECT_EQ(cache().getCampaign(""), nullptr) << "no hash is nobody's";
  EXPECT_EQ(cache().getNumberOfCampaigns("unknown"), 0);
  EXPECT_TRUE(cache().getCampaigns("unknown").empty());
  cache().clear();
  EXPECT_EQ(cache().getNextCampaign("p"), nullptr);
}

TEST_F(CacheClientTest, StartsWithAnEmptyFolder) {
  write("old/page.html");
  EXPECT_EQ(cache().getHTMLPath("old"), std::nullopt);
  EXPECT_FALSE(fs::exists(world_.cacheRoot()));
}

TEST_F(CacheClientTest, RemovesTheFilesOfThePastOnAWorker) {
  const fs::path caches = world_.cacheRoot().parent_path();
  write("old/page.html");
  write("../com.vantorium.old-OF-A-KILLED-PROCESS/film.mp4");
  write("../com.vantorium.other/theirs");
  cache();
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  const auto count = [&] { return std::distance(fs::directory_iterator(caches), fs::directory_iterator()); };
  while (count() > 1 && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
  EXPECT_EQ(count(), 1);
  EXPECT_TRUE(fs::exists(caches / "com.vantorium.other/theirs"));
}

TEST_F(CacheClientTest, FindsPagesInTheIdentifiersFolder) {
  EXPECT_EQ(cache().getFolderPath("ID"), (world_.cacheRoot() / "ID").string());
  EXPECT_EQ(cache().getHTMLPath("ID"), std::nullopt);
  write("ID/a.HTML");
  write("ID/a.html/not a page");
  write("other/x.html");
  EXPECT_EQ(cache().getHTMLPath("ID"), std::nullopt);
  write("ID/c.html");
  write("outside.html");
  fs::create_symlink(world_.cacheRoot() / "outside.html", world_.cacheRoot() / "ID/a.html/link.html");
  write("ID/b/page.htm");
  EXPECT_EQ(cache().getHTMLPath("ID"), (world_.cacheRoot() / "ID/c.html").string()) << "nearest to the top";
  fs::remove(world_.cacheRoot() / "ID/c.html");
  EXPECT_EQ(cache().getHTMLPath("ID"), (world_.cacheRoot() / "ID/b/page.htm").string());
  write("ID/about.html");
  write("ID/index.html");
  EXPECT_EQ(cache().getHTMLPath("ID"), (world_.cacheRoot() / "ID/index.html").string());
}

TEST_F(CacheClientTest, SavesBlobsAndReportsWhatItCannot) {
  cache().add(Data("film"), "ID", "mp4");
  EXPECT_EQ(cache().getFilePath("ID"), (world_.cacheRoot() / "ID.mp4").string());
  EXPECT_EQ(testing::contentOf(world_.cacheRoot() / "ID.mp4"), "film");

  cache().add(Data("x"), "bad", "mp4/../../../escaped");
  cache().add(Data("x"), "bad", std::string(300, 'm'));
  EXPECT_EQ(cache().getFilePath("bad"), std::nullopt);
  const auto reports = world_.reports();
  ASSERT_EQ(reports.size(), 2U);
  EXPECT_NE(reports[0].find("leaves the folder"), std::string::npos) << reports[0];
  EXPECT_NE(reports[1].find("File name too long"), std::string::npos) << reports[1];
}

TEST_F(CacheClientTest, SharesTheFilesOfAnEarlierCampaign) {
  cache().add(Data("film"), "first", "mp4");
  write("first/index.html");
  cache().shareFiles("second", "first");
  cache().shareFiles("third", "second");
  for (const char* identifier : {"first", "second", "third"}) {
    EXPECT_EQ(cache().getFilePath(identifier), (world_.cacheRoot() / "first.mp4").string());
    EXPECT_EQ(cache().getHTMLPath(identifier), (world_.cacheRoot() / "first/index.html").string());
    EXPECT_EQ(cache().getFolderPath(identifier), (world_.cacheRoot() / "first").string());
    EXPECT_TRUE(cache().hasFilesOnDisk(identifier));
  }
  fs::remove_all(world_.cacheRoot());
  EXPECT_FALSE(cache().hasFilesOnDisk("third"));
  EXPECT_TRUE(cache().hasFilesOnDisk("nothing saved"));
}

TEST_F(CacheClientTest, CompletesAnEmptyBatchAtOnce) {
  testing::Outcome<bool, std::vector<std::shared_ptr<File>>> outcome;
  cache().precacheFiles("ID", {}, "", world_.client()->fileDownloader, outcome.completion());
  ASSERT_TRUE(outcome.isThere());
  EXPECT_TRUE(std::get<0>(outcome.get()));
}

TEST_F(CacheClientTest, DownloadsABatchIntoFoldersLikeTheURLs) {
  std::vector<std::string> paths;
  for (int i = 0; i < 120; ++i) {
    paths.push_back("/pkg/" + std::to_string(i % 7) + "/" + std::to_string(i));
    serve(paths.back(), "body of " + paths.back());
  }
  const auto [success, files] = precache(paths, "/pkg");
  EXPECT_TRUE(success);
  ASSERT_EQ(files.size(), paths.size());
  for (std::size_t i = 0; i < paths.size(); ++i) {
    EXPECT_EQ(files[i]->sourcePath, world_.server.baseURL() + paths[i]);
    EXPECT_EQ(files[i]->destinationPath, (world_.cacheRoot() / "ID").string() + paths[i].substr(4));
    EXPECT_EQ(testing::contentOf(*files[i]->destinationPath), "body of " + paths[i]);
  }
}

TEST_F(CacheClientTest, EndsABatchWithWhatBecameOfEachFile) {
  for (const char* path : {"/good", "/good/below", "/cut", "/last"}) serve(path, "0123456789");
  world_.server.setFaults({{"path", "/cut"}, {"fault", "bodyCutShort"}});
  precache({"/good"});
  const auto [success, files] = precache({"/good/below", "/cut", "", "not a url", "https://h\xff/", "/last"});
  EXPECT_FALSE(success);
  EXPECT_EQ(files[0]->error, std::nullopt) << "a folder cannot be made where a file is: a failed write";
  EXPECT_EQ(files[1]->error->domain(), "curl");
  EXPECT_EQ(files[2]->error, VantoriumError::internalError());
  EXPECT_EQ(files[4]->error, VantoriumError::internalError());
  for (int i = 0; i < 5; ++i) EXPECT_FALSE(files[i]->isDownloaded || files[i]->destinationPath) << i;
  EXPECT_TRUE(files[5]->isDownloaded);
  EXPECT_FALSE(fs::exists(world_.cacheRoot() / "ID/cut"));
  EXPECT_EQ(testing::contentOf(world_.cacheRoot() / "ID/good"), "0123456789");
}

TEST_F(CacheClientTest, RefusesPathsThatLeaveTheFolder) {
  std::string deep;
  for (int i = 0; i < 100; ++i) deep += "/d";
  const std::vector<std::string> hostile = {
      "/../escaped",
      "/a/../../escaped",
      "/a/..",
      "/%2e%2e/escaped",
      "/a/%2e%2e%2fescaped",
      "/..%5cescaped",
      "/..\\escaped",
      "/a%00b",
      "/",
      "/a/",
      "/.%2e/escaped.html",
      "/%2E%2E/%2E%2E/etc",
      "/../ID-escaped",
      deep,
  };
  for (const std::string& path : hostile) serve(path, "evil");
  const auto [success, files] = precache(hostile);
  EXPECT_FALSE(success);
  for (const auto& file : files) {
    ASSERT_TRUE(file->error) << file->sourcePath;
    EXPECT_NE(file->error->errorMessage().find("the file is refused"), std::string::npos);
    EXPECT_FALSE(file->isDownloaded);
  }
  // Nor does taking a piece out of the path lead elsewhere.
  serve("/x/y", "evil");
  EXPECT_TRUE(precache({"/x/y"}, "/ID").second[0]->error);
  EXPECT_TRUE(precache({"/x/y"}, "/x/y").second[0]->error);
  EXPECT_TRUE(precache({"/x/y"}, world_.cacheRoot().string()).second[0]->error);
  EXPECT_TRUE(world_.requests().empty()) << "refused before anything is fetched";
  EXPECT_FALSE(fs::exists(world_.cacheRoot()));
}

TEST_F(CacheClientTest, EndsItsBatchesWhenEverythingElseIsGone) {
  serve("/slow", "x");
  world_.server.setFaults({{"path", "/slow"}, {"fault", "neverAnswers"}});
  testing::Outcome<bool, std::vector<std::shared_ptr<File>>> outcome;
  auto own = std::make_unique<Client>(world_.context, ServiceConfiguration{});
  own->cacheClient->precacheFiles("ID", {world_.server.baseURL() + "/slow"}, "", own->fileDownloader,
                                  outcome.completion());
  world_.server.waitForRequest([](const json&) { return true; });
  own->shutdown();
  own.reset();
  const auto [success, files] = outcome.get();
  EXPECT_FALSE(success);
  EXPECT_EQ(files[0]->error->code(), 42);
}

}  // namespace
}  // namespace vantorium
