// The SDK as a whole process, on days on which the machine does not play along.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <set>
#include <thread>

#include "drive/drive_process.hpp"
#include "sandbox/server.hpp"
#include "support/archive.hpp"

namespace vantorium {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::DriveProcess;

class BadDay : public ::testing::Test {
 protected:
  BadDay() { server.start(); }

  std::vector<std::string> arguments(const fs::path& folder) const {
    return {"--base-url", server.baseURL(), "--home", folder.string(), "-"};
  }
  static void begin(DriveProcess& drive) {
    drive.say({{"do", "set"}, {"autoCaching", false}});
    drive.say({{"do", "configure"}, {"appID", "app"}});
    drive.say({{"do", "await"}, {"event", {{"event", "completion"}, {"of", "configure"}}}});
    for (const char* placement : {"rewarded-main", "playable-rewarded"})
      drive.say({{"do", "precacheCampaigns"}, {"placement", placement}});
  }

  std::set<std::string> cacheFolders() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(home.path() / "caches"))
      names.insert(entry.path().filename());
    return names;
  }

  testing::TemporaryDirectory home;
  sandbox::Server server{sandbox::Options{}};
};

TEST_F(BadDay, AKilledProcessLeavesNothingThatTheNextOneTakesForItsOwn) {
  for (int moment = 0; moment < 200; ++moment) {
    DriveProcess drive(arguments(home.path()));
    begin(drive);
    // Each time a little later: after so many lines, and the work of what is under way then.
    for (int line = 0; line < moment % 7; ++line) ASSERT_TRUE(drive.readLine());
    drive.kill();
  }
  DriveProcess drive(arguments(home.path()));
  begin(drive);
  for (const char* method : {"didConfigure", "didPrecacheForPlacement:", "didPrecacheForPlacement:"})
    EXPECT_FALSE(drive.hear({{"event", "delegate"}, {"method", method}}).is_null()) << method;
  // The workers remove what was left while the process goes on.
  const std::set<std::string> own{"com.vantorium", "com.vantorium.lock"};
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (cacheFolders() != own && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
  EXPECT_EQ(cacheFolders(), own);
  EXPECT_EQ(drive.finish(), 0);
}

TEST_F(BadDay, AFullDiskIsAnErrorThatSaysSo) {
  const fs::path disk = home.path() / "disk";
  fs::create_directories(disk);
  const std::string mounted =
      "mount -t tmpfs -o size=1m,nr_inodes=64 tmpfs '" + disk.string() + "' && exec \"$@\"";
  const std::vector<std::string> wrapper{"unshare", ::geteuid() == 0 ? "-m" : "-rm", "sh", "-c", mounted,
                                         "sh"};
  const auto serve = [this](const json& campaign) {
    server.setAnswer("/api/campaigns", 200, "application/json",
                     json{{"status", "success"}, {"data", {campaign}}}.dump());
  };
  const auto serveFilm = [&](const std::string& id) {
    const std::string film = "/films/" + id + ".mp4";
    server.setAnswer(film, 200, "video/mp4", std::string(400'000, 'f'));
    serve({{"campaignId", id}, {"hash", id}, {"videoUrl", server.baseURL() + film}});
  };
  DriveProcess drive(arguments(disk), wrapper);
  drive.say({{"do", "set"}, {"autoCaching", false}});
  drive.say({{"do", "configure"}, {"appID", "app"}});
  ASSERT_FALSE(drive.hear({{"event", "completion"}, {"success", true}}).is_null())
      << "no small disk can be mounted here: " << drive.complaints();
  const auto precache = [&drive](const char* placement) {
    drive.say({{"do", "precacheCampaigns"}, {"placement", placement}});
    return drive.hear({{"event", "completion"}, {"of", "precacheCampaigns"}});
  };
  const auto isReady = [&drive](const char* placement) {
    drive.say({{"do", "isCampaignReady"}, {"placement", placement}});
    return drive.hear({{"event", "result"}})["value"].get<bool>();
  };
  serveFilm("a");
  EXPECT_TRUE(precache("p")["success"]);
  serveFilm("b");
  EXPECT_TRUE(precache("q")["success"]);
  serveFilm("c");
  const json refused = precache("r");
  EXPECT_FALSE(refused["success"]);
  EXPECT_NE(refused["error"]["text"].get<std::string>().find("No space left on device"), std::string::npos)
      << refused;
  EXPECT_TRUE(isReady("p") && isReady("q") && !isReady("r"));

  // What has been shown makes room: for a film, and for what is in an archive that itself found room.
  const auto show = [&drive](const char* placement) {
    drive.say({{"do", "showCampaign"}, {"placement", placement}});
    drive.hear({{"event", "presented"}});
    drive.say({{"do", "video"}, {"event", "ended"}});
    drive.say({{"do", "tap"}, {"control", "back"}});
    EXPECT_TRUE(drive.hear({{"event", "completion"}, {"of", "showCampaign"}})["success"]);
  };
  show("p");
  EXPECT_TRUE(precache("r")["success"]);
  EXPECT_TRUE(isReady("q") && isReady("r"));
  server.setAnswer("/games/g.zip", 200, "application/zip",
                   testing::archiveOf({{"game.js", std::string(400'000, ' ')}}));
  serve({{"campaignId", "g"},
         {"type", "playable"},
         {"tag", "<script src='game.js'></script>"},
         {"baseUrl", server.baseURL() + "/games"},
         {"zippedUrl", server.baseURL() + "/games/g.zip"}});
  const json tooLarge = precache("s");
  EXPECT_NE(tooLarge.dump().find("No space left on device"), std::string::npos) << tooLarge;
  show("q");
  const json unpacked = precache("s");
  EXPECT_TRUE(unpacked["success"]) << unpacked;
  EXPECT_TRUE(isReady("r") && isReady("s"));
  EXPECT_EQ(drive.finish(), 0);
}

}  // namespace
}  // namespace vantorium
