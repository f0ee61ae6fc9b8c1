#include "cache/file_downloader.hpp"

#include <gtest/gtest.h>

#include "support/service_world.hpp"

namespace vantorium {
namespace {

class FileDownloaderTest : public ::testing::Test {
 protected:
  using Download = testing::Outcome<std::optional<Data>, std::optional<Error>>;
  std::pair<std::optional<Data>, std::optional<Error>> download(const std::string& path) {
    Download outcome;
    downloader().downloadFile(*downloader().sourceURL(world_.server.baseURL() + path), outcome.completion());
    const auto [data, error] = outcome.get();
    return {data, error};
  }
  FileDownloaderProtocol& downloader() { return *world_.client()->fileDownloader; }

  testing::ServiceWorld world_;
};

TEST_F(FileDownloaderTest, MapsURLsToPaths) {
  const auto path = [this](const std::string& source, const std::string& remove = "") {
    return downloader().destinationURL(source, "/c/id", remove).value_or("none");
  };
  EXPECT_EQ(path("https://h/x/y.png"), "/c/id/x/y.png");
  EXPECT_EQ(path("https://h/x/y.png?a=/b#c"), "/c/id/x/y.png");
  EXPECT_EQ(path("https://h/pkg/game/pkg/index.html", "/pkg"), "/c/id/game/pkg/index.html");
  EXPECT_EQ(path("https://h/x", "/c"), "/id/x") << "wherever it stands";
  EXPECT_EQ(path("https://h/a b.png"), "/c/id/a b.png");
  EXPECT_EQ(path("https://h/a%20b.png"), "/c/id/a%20b.png");
  EXPECT_EQ(path(""), "none");
  EXPECT_EQ(path("https://h/\xff"), "none");

  EXPECT_EQ(downloader().sourceURL("https://h/a b.png")->absoluteString(), "https://h/a%20b.png");
  EXPECT_EQ(downloader().sourceURL("https://h/a%20b.png")->absoluteString(), "https://h/a%2520b.png");
  EXPECT_FALSE(downloader().sourceURL(""));
}

TEST_F(FileDownloaderTest, TakesWhateverBodyArrives) {
  world_.server.setAnswer("/a b.txt", 200, "text/plain", "text");
  EXPECT_EQ(download("/a b.txt").first->bytes(), "text");
  world_.server.setAnswer("/gone", 404, "text/html", "an error page");
  EXPECT_EQ(download("/gone").first->bytes(), "an error page");
  world_.server.setAnswer("/empty", 200, "text/plain", "");
  EXPECT_EQ(download("/empty").first->size(), 0U);
  for (const auto& request : world_.requests()) {
    EXPECT_EQ(request["method"], "GET");
    EXPECT_FALSE(request["headers"].contains("User-Agent") || request["headers"].contains("Authorization"));
  }
  EXPECT_TRUE(world_.reports().empty());
}

TEST_F(FileDownloaderTest, ReportsWhatCouldNotBeFetched) {
  world_.server.setFaults({{"path", "/"}, {"fault", "bodyCutShort"}});
  const auto [data, error] = download("/x.png");
  EXPECT_FALSE(data);
  ASSERT_TRUE(error);
  const std::string expected =
      "Can't download file from: " + world_.server.baseURL() + "/x.png " + error->errorMessage();
  EXPECT_TRUE(world_.awaitReports(1).at(0).starts_with(expected));
}

TEST_F(FileDownloaderTest, SavesIntoFoldersThatItMakes) {
  const auto path = world_.home.path() / "a/b/c.txt";
  EXPECT_TRUE(downloader().saveFile(Data("one"), path.string()));
  EXPECT_TRUE(downloader().saveFile(Data("two"), path.string()));
  EXPECT_EQ(testing::contentOf(path), "two");
  EXPECT_FALSE(downloader().saveFile(Data("x"), (path / "below a file").string()));
  EXPECT_FALSE(downloader().saveFile(Data("x"), path.parent_path().string()));
}

}  // namespace
}  // namespace vantorium
