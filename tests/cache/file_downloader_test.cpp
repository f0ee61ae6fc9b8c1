#include "cache/file_downloader.hpp"

#include <gtest/gtest.h>

#include "support/service_world.hpp"

namespace vantorium {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class FileDownloaderTest : public ::testing::Test {
 protected:
  using Files = std::vector<Result<File>>;

  void serve(const std::string& path, const std::string& body, int status = 200) {
    world_.server.setAnswer(path, status, "text/plain", body);
  }
  std::string folder() { return (world_.cache().files->root() / "ID").string(); }
  Result<Download> plan(const std::string& source, const std::string& remove = "") {
    return planDownload("endAssets", source.starts_with('/') ? world_.server.baseURL() + source : source,
                        folder(), remove);
  }
  Files precache(const std::vector<std::string>& paths, const std::string& pathToRemove = "") {
    std::vector<Download> downloads;
    for (const auto& path : paths) downloads.push_back(*plan(path, pathToRemove));
    testing::Outcome<Files> outcome;
    world_.cache().downloads->precacheFiles(downloads, outcome.completion());
    return std::get<0>(outcome.get());
  }
  static std::string textOf(const Result<File>& file) {
    return file ? "" : file.error()->localizedDescription();
  }

  testing::ServiceWorld world_;
};

TEST_F(FileDownloaderTest, PlansWhereAFileGoes) {
  const auto path = [this](const std::string& source, const std::string& remove = "") {
    const auto planned = plan(source, remove);
    return planned ? planned->destinationPath.substr(folder().size())
                   : planned.error()->localizedDescription();
  };
  EXPECT_EQ(path("https://h/x/y.png?a=/b#c"), "/x/y.png");
  EXPECT_EQ(path("https://h/pkg/game/pkg/index.html", "/pkg"), "/game/pkg/index.html");
  EXPECT_EQ(path("https://h/a b.png"), "/a b.png");
  EXPECT_EQ(path("https://h/a%20b.png"), "/a%20b.png");
  EXPECT_EQ(plan("https://h/a b.png")->url, "https://h/a%20b.png");
  EXPECT_EQ(plan("https://h/a%20b.png")->url, "https://h/a%2520b.png");
  for (const auto& [source, flaw] :
       std::map<std::string, std::string>{{"", "\"endAssets\" is missing or empty"},
                                          {"https://h\xff/", "is no address"},
                                          {"/a/", "names no file"}})
    EXPECT_NE(path(source).find(flaw), std::string::npos) << path(source);
}

TEST_F(FileDownloaderTest, RefusesPathsThatLeaveTheFolder) {
  std::string deep;
  for (int i = 0; i < 100; ++i) deep += "/d";
  for (const std::string& path :
       {std::string("/../escaped"), std::string("/a/../../escaped"), std::string("/a/.."),
        std::string("/%2e%2e/escaped"), std::string("/a/%2e%2e%2fescaped"), std::string("/..%5cescaped"),
        std::string("/..\\escaped"), std::string("/a%00b"), std::string("/.%2e/escaped.html"),
        std::string("/../ID-escaped"), deep}) {
    const auto planned = plan(path);
    ASSERT_FALSE(planned) << path;
    EXPECT_NE(planned.error()->errorMessage().find("the file is refused"), std::string::npos);
  }
  // Nor does taking a piece out of the path lead elsewhere.
  for (const std::string& piece : {std::string("/ID"), std::string("/x/y"), world_.cacheRoot().string()})
    EXPECT_FALSE(plan("/x/y", piece)) << piece;
}

TEST_F(FileDownloaderTest, KeepsFilesApartThatWouldShareAPath) {
  const auto plans = planDistinctDownloads(
      {{"assets", "https://a/x"}, {"assets", "https://b/x"}, {"assets", "https://a/x/y"}, {"appIcon", ""}},
      "/c/id");
  ASSERT_EQ(plans.size(), 4U);
  EXPECT_EQ(plans[0]->destinationPath, "/c/id/x");
  EXPECT_NE(plans[1]->destinationPath, "/c/id/x");
  EXPECT_NE(plans[2]->destinationPath, "/c/id/x/y") << "a folder cannot be where a file is";
  EXPECT_NE(plans[3].error()->localizedDescription().find("\"appIcon\" is missing"), std::string::npos);
}

TEST_F(FileDownloaderTest, DownloadsABatchIntoFoldersLikeTheAddresses) {
  std::vector<std::string> paths;
  for (int i = 0; i < 120; ++i) {
    paths.push_back("/pkg/" + std::to_string(i % 7) + "/" + std::to_string(i));
    serve(paths.back(), "body of " + paths.back());
  }
  const Files files = precache(paths, "/pkg");
  ASSERT_EQ(files.size(), paths.size());
  for (std::size_t i = 0; i < paths.size(); ++i) {
    ASSERT_TRUE(files[i]);
    EXPECT_EQ(files[i]->sourcePath, world_.server.baseURL() + paths[i]);
    EXPECT_EQ(files[i]->destinationPath, folder() + paths[i].substr(4));
    EXPECT_EQ(testing::contentOf(files[i]->destinationPath), "body of " + paths[i]);
    EXPECT_EQ(files[i]->answer.status, 200);
    EXPECT_EQ(files[i]->answer.contentType, "text/plain");
  }
  for (const auto& request : world_.requests())
    EXPECT_FALSE(request["headers"].contains("User-Agent") || request["headers"].contains("Authorization"));
  EXPECT_TRUE(world_.reports().empty());
  testing::Outcome<Files> none;
  world_.cache().downloads->precacheFiles({}, none.completion());
  EXPECT_TRUE(none.isThere());
}

TEST_F(FileDownloaderTest, TellsWhatBecameOfEachFileAndLeavesNothingHalf) {
  for (const char* path : {"/good", "/good/below", "/cut", "/last"}) serve(path, "0123456789");
  serve("/missing", "an error page", 404);
  serve("/broken", "", 503);
  serve("/empty", "", 204);
  world_.server.setFaults({{"path", "/cut"}, {"fault", "bodyCutShort"}});
  precache({"/good"});
  const Files files = precache({"/good/below", "/cut", "/missing", "/broken", "/empty", "/last"});
  EXPECT_EQ(files[0].error()->domain(), "posix") << "a folder cannot be made where a file is";
  EXPECT_NE(textOf(files[0]).find("Not a directory"), std::string::npos) << textOf(files[0]);
  EXPECT_EQ(files[1].error()->domain(), "curl");
  EXPECT_EQ(files[2].error()->code(), 404);
  EXPECT_NE(textOf(files[2]).find("404 for " + world_.server.baseURL() + "/missing"), std::string::npos);
  EXPECT_EQ(files[3].error()->code(), 503);
  EXPECT_TRUE(files[4] && files[5]) << "an asset may be empty";
  EXPECT_EQ(world_.awaitReports(4).size(), 4U);
  for (const char* path : {"/cut", "/missing", "/broken"}) EXPECT_FALSE(fs::exists(folder() + path)) << path;

  // A film, a page or an archive may not.
  auto film = *planFileDownload("videoUrl", world_.server.baseURL() + "/empty", folder() + ".mp4",
                                world_.cacheRoot().string());
  testing::Outcome<Result<File>> outcome;
  world_.cache().downloads->downloadFile(film, outcome.completion());
  EXPECT_NE(textOf(std::get<0>(outcome.get())).find("204 without a byte"), std::string::npos);
}

TEST_F(FileDownloaderTest, EndsItsBatchesWhenEverythingElseIsGone) {
  serve("/slow", "x");
  world_.server.setFaults({{"path", "/slow"}, {"fault", "neverAnswers"}});
  testing::Outcome<Files> outcome;
  auto own = std::make_unique<Client>(Client::make(world_.context, ServiceConfiguration{}));
  own->cacheClient.downloads->precacheFiles({*plan("/slow")}, outcome.completion());
  world_.server.waitForRequest([](const json&) { return true; });
  own->session->shutdown();
  own.reset();
  EXPECT_EQ(std::get<0>(outcome.get()).at(0).error()->code(), 42);
}

TEST_F(FileDownloaderTest, BringsPicturesAsLongAsTheyAreWanted) {
  serve("/picture", "picture");
  serve("/gone", "an error page", 404);
  const auto load = [this](const std::string& path, std::uint64_t mostBytes = 1000) {
    testing::Outcome<Result<Data>> outcome;
    const auto task = world_.cache().downloads->downloadData(world_.server.baseURL() + path, mostBytes,
                                                             outcome.completion());
    return std::get<0>(outcome.get());
  };
  EXPECT_EQ(load("/picture")->bytes(), "picture");
  EXPECT_EQ(load("/gone").error()->code(), 404);
  EXPECT_EQ(load("/picture", 3).error()->domain(), "curl");
  world_.server.setFaults({{"path", "/picture"}, {"fault", "neverAnswers"}});
  testing::Outcome<Result<Data>> dropped;
  auto task = world_.cache().downloads->downloadData(world_.server.baseURL() + "/picture", 1000,
                                                     dropped.completion());
  task.reset();
  EXPECT_EQ(std::get<0>(dropped.get()).error()->code(), 42);
}

}  // namespace
}  // namespace vantorium
