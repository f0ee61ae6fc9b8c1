// The program itself, against a service on this machine.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "drive/drive_process.hpp"
#include "sandbox/server.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using testing::DriveProcess;
using testing::Played;
using testing::playScript;

constexpr const char* configured = R"({"do":"set","autoCaching":false}
{"do":"configure","appID":"app"}
{"do":"await","event":{"event":"completion","of":"configure","success":true}}
)";

struct Drive : ::testing::Test {
  Drive() { server.start(); }

  std::vector<std::string> arguments(std::vector<std::string> more = {}) const {
    std::vector<std::string> all{"--base-url", server.baseURL(), "--widget-url", server.baseURL()};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }
  Played play(const std::string& script, std::vector<std::string> more = {}) const {
    return playScript(script, arguments(std::move(more)));
  }
  std::size_t events(const std::string& kind) const {
    std::size_t found = 0;
    for (const auto& event : server.events()) found += event["kind"] == kind;
    return found;
  }

  sandbox::Server server{sandbox::Options{}};
};

json viewOf(const json& snapshot, const std::string& outlet) {
  for (const auto& view : snapshot["views"]) {
    if (view["outlet"] == outlet) return view;
  }
  return nullptr;
}

TEST_F(Drive, PlaysARewardedVideoFromPrecachingToTheStore) {
  const Played played = play(std::string(configured) + R"(
{"do":"precacheCampaigns","placement":"rewarded-main","queue":"background","tag":{"any":["value"]}}
{"do":"await","event":{"event":"completion","of":"precacheCampaigns"}}
{"do":"isCampaignReady","placement":"rewarded-main"}
{"do":"showCampaign","placement":"rewarded-main","serverParameter":{"level":"3"}}
{"do":"video","at":6,"of":12}
{"do":"tap","control":"muteButton"}
{"do":"snapshot","tag":"film"}
{"do":"video","event":"ended"}
{"do":"await","event":{"method":"didReceiveRewardForPlacement:amount:"}}
{"do":"page","navigate":"reportclick://x"}
{"do":"await","event":{"event":"storeSheet","action":"present"}}
{"do":"store","event":"finished"}
{"do":"await","event":{"event":"completion","of":"showCampaign","success":true}}
)");
  EXPECT_EQ(played.status, 0) << played.complaints;
  const json precached = played.first({{"of", "precacheCampaigns"}});
  EXPECT_EQ(precached["thread"], "queue");
  EXPECT_EQ(precached["tag"], json::parse(R"({"any":["value"]})"));
  EXPECT_EQ(precached["error"], nullptr);
  EXPECT_EQ(played.first({{"event", "result"}})["value"], true);
  const json film = played.first({{"event", "snapshot"}, {"tag", "film"}});
  EXPECT_EQ(film["player"]["position"], 6.0);
  EXPECT_EQ(film["player"]["muted"], true);
  EXPECT_EQ(viewOf(film, "muteButton")["selected"], true);
  EXPECT_EQ(played.first({{"method", "didReceiveRewardForPlacement:amount:"}})["amount"], 50);
  EXPECT_EQ(played.first({{"of", "showCampaign"}})["thread"], "main");
  EXPECT_EQ(events("impression"), 1U);
  EXPECT_EQ(events("finished"), 1U);
}

TEST_F(Drive, ShowsNativeAdsInViewsOfItsOwn) {
  const Played played = play(std::string(configured) + R"(
{"do":"precacheNativeAds","placement":"native-video","options":{"name":"o","numberOfAdsToPrecache":9}}
{"do":"get","options":"o"}
{"do":"await","event":{"event":"completion","of":"precacheNativeAds","success":true}}
{"do":"nativeView","create":"v","outlets":["mediaView","callToActionButton","appNameLabel"],"frame":[0,800,390,300]}
{"do":"populateNativeAdView","view":"v","ad":0,"options":[{"shouldMuteVideo":true},{"serverParameter":{"row":"1"}}]}
{"do":"advance","seconds":0.3}
{"do":"nativeView","view":"v","inWindow":true}
{"do":"advance","seconds":0.3}
{"do":"snapshot","view":"v","tag":"seen"}
{"do":"nativeView","view":"v","hidden":true}
{"do":"advance","seconds":0.3}
{"do":"snapshot","view":"v","tag":"hidden"}
{"do":"nativeView","view":"v","hidden":false}
{"do":"tap","view":"v","control":"mediaView"}
{"do":"tap","view":"v","control":"callToActionButton"}
{"do":"await","event":{"event":"openURL","opened":true}}
{"do":"populateNativeAdView","view":"v","ad":7}
{"do":"reportNativeAdClick","ad":0,"tag":"by hand"}
)");
  EXPECT_EQ(played.status, 0) << played.complaints;
  EXPECT_EQ(played.first({{"event", "property"}})["value"]["numberOfAdsToPrecache"], 5);
  const json ad = played.first({{"of", "precacheNativeAds"}})["ads"].at(0);
  EXPECT_EQ(ad["placementID"], "native-video");
  EXPECT_EQ(ad["assets"].at(0)["size"], json({960, 540}));
  EXPECT_EQ(ad["assets"].at(0)["filePath"], ad["assets"].at(0)["internalFilePath"]);
  EXPECT_EQ(played.first({{"of", "populateNativeAdView"}})["thread"], "caller");
  const json seen = played.first({{"tag", "seen"}});
  EXPECT_EQ(seen["view"], "v");
  EXPECT_EQ(seen["player"]["playing"], true);
  EXPECT_EQ(viewOf(seen, "appNameLabel")["text"], ad["appName"]);
  EXPECT_EQ(played.first({{"tag", "hidden"}})["player"]["playing"], false);
  EXPECT_EQ(played.count({{"event", "player"}, {"action", "mute"}, {"muted", false}}), 1U);
  EXPECT_EQ(played.count({{"of", "populateNativeAdView"}, {"success", false}}), 1U)
      << "there is no eighth ad";
  EXPECT_EQ(played.count({{"of", "reportNativeAdClick"}, {"tag", "by hand"}, {"value", nullptr}}), 1U);
}

TEST_F(Drive, TellsWhereACompletionRuns) {
  const Played played = play(R"(
{"do":"showCampaign","placement":"p","tag":1}
{"do":"showCampaign","placement":"p","from":"background","tag":2}
{"do":"canView","placement":"p","tag":3}
{"do":"canView","placement":"p","queue":"background","tag":4}
)");
  const std::vector<std::string> threads{"caller", "caller", "main", "queue"};
  ASSERT_EQ(played.lines.size(), threads.size()) << played.output;
  for (std::size_t index = 0; index < threads.size(); ++index) {
    EXPECT_EQ(played.lines[index]["tag"], index + 1);
    EXPECT_EQ(played.lines[index]["thread"], threads[index]);
    EXPECT_EQ(played.lines[index]["error"]["code"], 1);
  }
}

TEST_F(Drive, AwaitsAnyLineThatAnsweredNoAwaitBefore) {
  const Played played = play(R"({"do":"set","autoCaching":false}
{"do":"showCampaign","placement":"p","tag":"at once"}
{"do":"configure","appID":"app","tag":"later"}
{"do":"await","event":{"tag":"later","error":null}}
{"do":"await","event":{"tag":"at once","error":{"code":1}}}
{"do":"await","event":{"tag":"at once"},"timeout":0.1}
{"do":"getLog"}
)");
  EXPECT_EQ(played.status, 1) << "its line had answered already";
  EXPECT_NE(played.complaints.find("line 6: await: no line with {\"tag\":\"at once\"}"), std::string::npos)
      << played.complaints;
  EXPECT_EQ(played.count({{"event", "result"}}), 0U) << "nothing is played after it";

  const Played other = play(R"({"do":"canView","placement":"p"}
{"do":"await","event":{"of":"canView","success":true},"timeout":0.1}
)");
  EXPECT_NE(other.complaints.find("the nearest one was {\"error\":{\"code\":1,"), std::string::npos)
      << other.complaints;
}

TEST_F(Drive, HoldsAConversation) {
  DriveProcess drive(arguments({"-"}));
  drive.say({{"do", "set"}, {"autoCaching", false}});
  drive.say({{"do", "configure"}, {"appID", "app"}});
  EXPECT_EQ(drive.hear({{"event", "completion"}})["success"], true) << "while nothing is said";
  drive.say({{"do", "showOfferWall"}, {"placement", "wall-main"}});
  EXPECT_EQ(drive.hear({{"event", "presented"}})["screen"], "OfferWallVC");
  drive.say({{"do", "delegate"}, {"methods", nullptr}});
  drive.say({{"do", "page"}, {"navigate", "closead://x"}});
  EXPECT_EQ(drive.hear({{"of", "showOfferWall"}})["success"], true);
  drive.send(R"({"do":"get","property":"isShowingAds"})");  // the last line needs no end
  EXPECT_EQ(drive.finish(), 0) << drive.complaints();
  EXPECT_NE(drive.output().find(R"("property":"isShowingAds","value":false)"), std::string::npos);
}

TEST_F(Drive, EndsAlthoughTheServiceHangsOrAnAdIsShown) {
  server.setFaults({{"path", "/api/campaigns"}, {"fault", "neverAnswers"}});
  const Played played = play(std::string(configured) + R"(
{"do":"precacheCampaigns","placement":"rewarded-main"}
{"do":"showOfferWall","placement":"wall-main"}
)");
  EXPECT_EQ(played.status, 0) << played.complaints;
  EXPECT_EQ(played.lines.back()["event"], "presented") << "the end is silent";
  DriveProcess drive(arguments({"-"}));
  drive.closeOutput();
  for (int time = 0; time < 1000 && drive.say({{"do", "snapshot"}}); ++time) {
  }
  EXPECT_EQ(drive.finish(), 2);
  EXPECT_NE(drive.complaints().find("standard output cannot be written"), std::string::npos);
}

TEST_F(Drive, TwoRunsOnOneHomeAreTwoLaunches) {
  const testing::TemporaryDirectory home;
  for (int launch = 0; launch < 2; ++launch) {
    EXPECT_EQ(play(configured, {"--home", home.path()}).status, 0);
    EXPECT_EQ(play(configured).status, 0);
  }
  std::vector<std::string> users;
  for (const auto& request : server.requests()) {
    if (request["path"] == "/api/init") users.push_back(request["body"]["userId"]);
  }
  ASSERT_EQ(users.size(), 4U);
  EXPECT_EQ(users[0], users[2]);
  EXPECT_NE(users[1], users[3]);
  EXPECT_NE(users[0], users[1]);
}

TEST_F(Drive, TheDeviceIsWhatTheScriptSays) {
  const Played played = play(R"({"do":"clock","now":"2026-07-01T20:15:00Z"}
{"do":"device","screen":[768,1024],"set":{"model":"Tablet","timezone":"Europe/Vienna","batteryState":"full"}}
{"do":"reachability","flags":["reachable","isWWAN"],"radio":"LTE"}
{"do":"set","autoCaching":false}
{"do":"configure","appID":"app","parameters":{"age":30,"dateOfBirth":{"date":"1990-05-31"}}}
{"do":"await","event":{"event":"completion"}}
{"do":"advance","seconds":1.25}
{"do":"reachability","flags":[]}
{"do":"showOfferWall","placement":"wall-main"}
{"do":"reachability","monitor":false}
)");
  EXPECT_EQ(played.first({{"event", "advanced"}})["now"], "2026-07-01T20:15:01.250Z");
  EXPECT_EQ(played.first({{"of", "showOfferWall"}})["error"]["code"], 3);
  EXPECT_EQ(played.status, 2) << "the monitor was used already";
  const std::string body = server.requests().at(0)["body"].dump();
  for (const char* fact : {"Tablet", "Europe/Vienna", "1990/05/31", "768"})
    EXPECT_NE(body.find(fact), std::string::npos) << fact << " in " << body;
  const Played offline = play(R"({"do":"reachability","monitor":false}
)" + std::string(configured) + R"({"do":"showOfferWall","placement":"wall-main"})");
  EXPECT_EQ(offline.first({{"of", "showOfferWall"}})["error"]["code"], 2) << offline.output;
}

TEST_F(Drive, RefusesWhatIsNoCommandAndSaysWhy) {
  const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
  const std::vector<std::pair<std::string, std::string>> lines{
      {"{", "not JSON"},
      {"\xff\xfe\x00\x01", "not JSON"},
      {R"({"do":"tap","control":"a)" + std::string("\xc3\x28") + "\"}", "not JSON"},
      {"[]", "is no command"},
      {"7", "is no command"},
      {deep, "nested deeper"},
      {R"({"do":"configure","appID":"a","tag":)" + deep + "}", "nested deeper"},
      {std::string(2 << 20U, 'x'), "too long"},
      {"{}", "\"do\" is missing"},
      {R"({"do":7})", "\"do\" cannot be 7"},
      {R"({"do":"plya"})", "Expected one of advance, app, await"},
      {R"({"do":"configure"})", "\"appID\" is missing. Expected a text"},
      {R"({"do":"configure","appID":"a","parameters":{"dateOfBirth":{"date":"2018-02-30"}}})", "parameters"},
      {R"({"do":"configure","appID":"a","queue":"other"})", "Expected one of background, main"},
      {R"({"do":"showCampaign","placement":"p","serverParameter":{"a":1}})", "an object of texts"},
      {R"({"do":"precacheNativeAds","placement":"p","options":{"numberOfAds":3}})", "numberOfAdsToPrecache"},
      {R"({"do":"precacheNativeAds","placement":"p","options":{"numberOfAdsToPrecache":1e12}})",
       "whole number"},
      {R"({"do":"advance","seconds":-1})", "a number from 0"},
      {R"({"do":"advance","seconds":1e400})", "not JSON"},
      {R"({"do":"clock","now":"yesterday"})", "a date like"},
      {R"({"do":"set"})", "Expected one of the fields autoCaching"},
      {R"({"do":"set","autoCaching":"yes"})", "true or false"},
      {R"({"do":"get","property":"colour"})", "isConfigured"},
      {R"({"do":"get","options":"unknown"})", "options given before"},
      {R"({"do":"delegate","methods":["didExplode"]})", "didPrecacheForPlacement:"},
      {R"({"do":"page","navigate":"closead://x"})", "No screen with a page is in front. Expected one"},
      {R"({"do":"video","event":"stops"})", "failedToEnd"},
      {R"({"do":"tap","control":"muteButton"})", "No ad screen is in front"},
      {R"({"do":"store","event":"finished"})", "No store sheet"},
      {R"({"do":"device","set":{"batteryLevel":"high"}})",
       "batteryLevel\" cannot be \"high\". Expected a number"},
      {R"({"do":"device","set":{"altitude":7}})", "Expected one of appVersion, batteryLevel"},
      {R"({"do":"device","set":{"languages":["de",7]}})", "a list of texts"},
      {std::string(R"({"do":"getLog"})") + '\0' + "garbage", "NUL"},
      {R"({"do":"get","property":"a\u0000b\nc"})", "a\\u0000b\\nc"},
      {R"({"do":"device","screen":[0,1]})", "[width, height]"},
      {R"({"do":"nativeView","create":"v","outlets":["logo"]})", "mediaView"},
      {R"({"do":"nativeView","view":"v","hidden":true})", "a view made before"},
      {R"({"do":"snapshot","view":"v"})", "a view made before"},
      {R"({"do":"reportNativeAdClick","ad":0})", "one of the 0 ads"},
  };
  for (const auto& [line, reason] : lines) {
    const Played played = play("\n \r\n" + line + "\n{\"do\":\"getLog\"}\n");
    EXPECT_EQ(played.status, 2) << line.substr(0, 80);
    EXPECT_EQ(played.complaints.find("vantorium-drive: line 3: "), 0U) << played.complaints;
    EXPECT_NE(played.complaints.find(reason), std::string::npos) << played.complaints;
    EXPECT_TRUE(played.output.empty()) << played.output;
  }
}

TEST_F(Drive, AHiddenControlCannotBeTapped) {
  const Played played = play(std::string(configured) + R"(
{"do":"precacheCampaigns","placement":"interstitial-main"}
{"do":"await","event":{"event":"completion","of":"precacheCampaigns"}}
{"do":"showCampaign","placement":"interstitial-main"}
{"do":"video","at":1,"of":12}
{"do":"tap","control":"skipVideoButton"}
)");
  EXPECT_EQ(played.status, 2);
  EXPECT_NE(played.complaints.find("line 9: tap: The control \"skipVideoButton\" is hidden."),
            std::string::npos)
      << played.complaints;
}

TEST_F(Drive, RefusesArgumentsThatItCannotUse) {
  for (const std::vector<std::string>& wrong : {std::vector<std::string>{"--clock", "lunar"},
                                                {"--base-url", "http://ads.example"},
                                                {"--base-url", ""},
                                                {"--home", ""},
                                                {"--ca", "/nowhere"},
                                                {"--home", "/dev/null/x"},
                                                {"/no/such/script"},
                                                {"/"},
                                                {"--what"}}) {
    DriveProcess drive(wrong);
    EXPECT_EQ(drive.finish(), 2) << wrong.front();
    EXPECT_FALSE(drive.complaints().empty());
  }
}

TEST_F(Drive, TheExamplesPlayTheSameTwice) {
  std::size_t played = 0;
  for (const auto& entry : std::filesystem::directory_iterator(VANTORIUM_SOURCE_DIR "/examples/scripts")) {
    const std::string path = entry.path();
    std::vector<std::string> outputs;
    for (int time = 0; time < 2; ++time) {
      DriveProcess drive(arguments({"--stable", path}));
      EXPECT_EQ(drive.finish(), 0) << path << ": " << drive.complaints();
      outputs.push_back(drive.output());
    }
    EXPECT_EQ(outputs[0], outputs[1]) << path;
    EXPECT_EQ(outputs[0].find(server.baseURL()), std::string::npos) << path;
    ++played;
  }
  EXPECT_GE(played, 10U);
}

}  // namespace
}  // namespace vantorium
