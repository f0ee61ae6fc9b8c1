// Records that differ from one handing out to the next, files made of their path, and the tally of what
// arrived.
#include <chrono>
#include <fstream>
#include <set>

#include "archive/zip.hpp"
#include "sandbox/wire_client.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium::sandbox {
namespace {

using namespace wire;

constexpr auto query = "placementId=varied&connectionType=WIFI&numOfCampaigns=1";

TEST_F(SandboxServerTest, RecordsDifferFromOneHandingOutToTheNext) {
  const json own{
      {"impressionId", "own-{{count}}"}, {"rewardAmount", "{{count}}"}, {"hash", "{{some}} {{some}}"}};
  server.setCampaigns("varied", json::array({{{"anyOf", {own, {{"impressionId", "other-{{count}}"}}}}}}));
  const std::string authorization = bearer();
  std::set<std::string> families;
  for (int count = 1; count <= 40; ++count) {
    const json campaign = campaigns(authorization, query).parsed()["data"][0];
    const std::string impression = campaign["impressionId"];
    EXPECT_EQ(impression.substr(impression.find('-') + 1), std::to_string(count));
    families.insert(impression.substr(0, impression.find('-')));
    if (!campaign.contains("hash")) continue;
    EXPECT_EQ(campaign["rewardAmount"], count);
    const std::string hash = campaign["hash"];
    EXPECT_EQ(hash, std::string({hash[0], ' ', hash[0]}));
  }
  EXPECT_EQ(families, (std::set<std::string>{"other", "own"}));
}

TEST_F(SandboxServerTest, FilesAreMadeOfTheirPath) {
  const auto body = [&](const std::string& path) { return send({server.baseURL() + path}).body; };
  EXPECT_EQ(body("/made/film/1.mp4"), body("/made/film/1.mp4"));
  EXPECT_NE(body("/made/film/1.mp4"), body("/made/film/2.mp4"));
  for (const std::string name : {"1.mp4", "1.html", "1.png", "1.zip", "1.css"}) {
    const std::string path = "/made/any/" + name;
    EXPECT_NE(body(path).find("made of " + path + "\n"), std::string::npos) << name;
  }
  const testing::TemporaryDirectory folder;
  const auto archive = folder.path() / "1.zip";
  std::ofstream(archive, std::ios::binary) << body("/made/any/1.zip");
  EXPECT_EQ(Zip::unzipFile(archive, folder.path(), true, {}, {}, {}, {}, {}), std::nullopt);
  std::ifstream file(folder.path() / "game" / "levels" / "first.js");
  std::string line;
  std::getline(file, line);
  EXPECT_EQ(line, "made of /made/any/1.zip");
}

TEST_F(SandboxServerTest, TheTallyCountsWhatArrivedAndWhatWasAnswered) {
  const std::string authorization = bearer();
  server.setCampaigns("varied", json::array({{{"impressionId", "ad-{{count}}"}}}));
  campaigns(authorization, query);
  server.setFaults(json::array({{{"path", "/api/impressions/"}, {"fault", "serverCloses"}, {"times", 1}},
                                {{"path", "/api/canReward/"}, {"fault", "noFill"}, {"times", 1}},
                                {{"path", "/api/canReward/"}, {"fault", "connectionReset"}, {"times", 1}}}));
  const std::string url = server.baseURL() + "/api/";
  for (const char* report : {"ad-1", "ad-1", "ad-1/finished"})
    send({url + "impressions/" + report, {"Content-Type: application/json", authorization}, ""});
  for (int asked = 0; asked < 3; ++asked) send({url + "canReward/p", {authorization}});
  const json tally = send({server.baseURL() + "/sandbox/tally",
                           {"Content-Type: application/json"},
                           R"({"impressions":["ad-1","ad-2"]})"})
                         .parsed();
  EXPECT_EQ(tally["impressions"],
            json({{"ad-1", {{"impression", 2}, {"started", 0}, {"finished", 1}, {"click", 0}}}}));
  EXPECT_EQ(tally["reports"]["ad"]["impression"], 2);
  EXPECT_EQ(tally["timesAgain"], 1);
  EXPECT_EQ(tally["permissions"]["/api/canReward/"],
            json({{"granted", 1}, {"refused", 1}, {"unanswered", 1}}));
  EXPECT_EQ(tally["struck"], 3);
  EXPECT_EQ(tally["handedOut"], 1);
}

TEST_F(SandboxServerTest, InAnOutageNobodyConnects) {
  const std::string url = server.baseURL() + "/sandbox/outage";
  const std::vector<std::string> headers{"Content-Type: application/json"};
  EXPECT_EQ(send({url, headers, R"({"seconds":-1})"}).status, 400);
  EXPECT_EQ(send({url, headers, R"({"seconds":0.01})"}).parsed()["status"], "success");
  // Sooner or later it has ended, on the same port.
  const auto isThere = [&] { return send({server.baseURL() + "/sandbox/faults"}).status == 200; };
  while (!isThere()) {
  }
  server.beginOutage(std::chrono::hours(1));
  while (isThere()) {
  }
  EXPECT_EQ(send({server.baseURL() + "/sandbox/faults"}).code, CURLE_COULDNT_CONNECT);
  server.stop();  // at once, although the hour is not over
}

}  // namespace
}  // namespace vantorium::sandbox
