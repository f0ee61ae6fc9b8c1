// The local ad service as a client meets it on the wire.
#include "sandbox/server.hpp"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <thread>

namespace vantorium::sandbox {
namespace {

using nlohmann::json;

struct Reply {
  CURLcode code;
  long status;
  std::string contentType;
  std::string body;
  json parsed() const { return json::parse(body, nullptr, false); }
};

struct Ask {
  std::string url;
  std::vector<std::string> headers = {};
  std::optional<std::string> post = {};
  long timeout = 20;
  std::string certificates = {};
};

Reply send(const Ask& ask) {
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), &curl_easy_cleanup);
  Reply reply{};
  curl_slist* headers = nullptr;
  for (const auto& header : ask.headers) headers = curl_slist_append(headers, header.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_URL, ask.url.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, ask.timeout);
  curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &reply.body);
  curl_easy_setopt(
      curl.get(), CURLOPT_WRITEFUNCTION, +[](char* data, size_t size, size_t count, void* out) {
        static_cast<std::string*>(out)->append(data, size * count);
        return size * count;
      });
  if (ask.post) {
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(ask.post->size()));
    curl_easy_setopt(curl.get(), CURLOPT_COPYPOSTFIELDS, ask.post->c_str());
  }
  if (!ask.certificates.empty()) {
    const curl_blob blob{const_cast<char*>(ask.certificates.data()), ask.certificates.size(), CURL_BLOB_COPY};
    curl_easy_setopt(curl.get(), CURLOPT_CAINFO_BLOB, &blob);
  }
  reply.code = curl_easy_perform(curl.get());
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &reply.status);
  const char* contentType = nullptr;
  curl_easy_getinfo(curl.get(), CURLINFO_CONTENT_TYPE, &contentType);
  if (contentType != nullptr) reply.contentType = contentType;
  curl_slist_free_all(headers);
  return reply;
}

json deviceBody() {
  return {{"appId", "a"},          {"userId", "u"},     {"osVersion", "1"},    {"manufacturer", "apple"},
          {"sWidth", 390.0},       {"sHeight", 844},    {"platform", "Phone"}, {"model", "P1"},
          {"rooted", false},       {"timezone", "UTC"}, {"volumeLevel", 0.5},  {"batteryLevel", 1.0},
          {"batteryState", "FULL"}};
}

class SandboxServerTest : public testing::Test {
 protected:
  void SetUp() override { server.start(); }

  Reply init(const json& body = deviceBody()) {
    return send({server.baseURL() + "/api/init", {"Content-Type: application/json"}, body.dump(2)});
  }
  std::string bearer() { return "Authorization: Bearer " + init().parsed().value("token", ""); }
  Reply campaigns(const std::string& authorization, const std::string& query) {
    return adRequest("/api/campaigns?" + query, authorization);
  }
  Reply native(const std::string& authorization, const std::string& query) {
    return adRequest("/api/sdk/native?" + query, authorization);
  }
  Reply adRequest(const std::string& target, const std::string& authorization) {
    return send(
        {server.baseURL() + target, {"Content-Type: application/json", "User-Agent: Phone", authorization}});
  }

  Server server{Options{}};
};

constexpr auto rewarded = "placementId=rewarded-main&connectionType=WIFI&numOfCampaigns=1";

TEST_F(SandboxServerTest, ServesACampaignAndCountsItsEvents) {
  const std::string authorization = bearer();
  const json first = campaigns(authorization, rewarded).parsed()["data"][0];
  const json again = campaigns(authorization, rewarded).parsed()["data"][0];
  EXPECT_NE(first["impressionId"], again["impressionId"]);
  const std::string url = server.baseURL() + "/api/impressions/" + first["impressionId"].get<std::string>();
  const std::vector<std::string> headers{"Content-Type: application/json", authorization};
  for (const char* report : {"", "/finished", "/click?q=x%2520y&"}) {
    EXPECT_EQ(send({url + report, headers, ""}).parsed()["status"], "success") << report;
  }
  EXPECT_EQ(send({url + "/finished", headers, ""}).parsed()["status"], "success");
  const json events = server.events();
  ASSERT_EQ(events.size(), 4U);
  EXPECT_EQ(events[2]["query"], json({{"q", "x%20y"}}));
  EXPECT_EQ(events[3]["kind"], "finished");
  EXPECT_EQ(events[3]["count"], 2);
  EXPECT_EQ(events[3]["placement"], "rewarded-main");
  EXPECT_TRUE(server.requests().back()["target"].get<std::string>().ends_with("/finished"));

  const Reply video = send({first["videoUrl"]});
  EXPECT_EQ(video.status, 200);
  EXPECT_GT(video.body.size(), 10'000U);
  const Reply page = send({first["endUrl"][0]});
  EXPECT_NE(page.body.find(server.baseURL() + "/static/"), std::string::npos);
  for (const auto& asset : first["endAssets"][0]) EXPECT_EQ(send({asset}).status, 200) << asset;
  EXPECT_EQ(send({first["customImage"]}).status, 200);
}

TEST_F(SandboxServerTest, PlayablesComeAsArchives) {
  const std::string authorization = bearer();
  for (const char* placement : {"playable-rewarded", "playable-portrait", "html-plain"}) {
    const std::string query =
        std::string("placementId=") + placement + "&connectionType=WIFI&numOfCampaigns=1";
    const json campaign = campaigns(authorization, query).parsed()["data"][0];
    EXPECT_EQ(campaign["type"], "playable");
    EXPECT_TRUE(campaign["zippedUrl"].get<std::string>().starts_with(campaign["baseUrl"].get<std::string>()));
    const Reply archive = send({campaign["zippedUrl"]});
    EXPECT_EQ(archive.contentType, "application/zip") << placement;

    server.setFaults({{"path", "/playable/"}, {"fault", "bodyTruncated"}, {"times", 1}});
    const Reply part = send({campaign["zippedUrl"]});
    EXPECT_EQ(part.code, CURLE_OK);
    EXPECT_EQ(part.body, archive.body.substr(0, archive.body.size() / 2));
  }
  EXPECT_EQ(send({server.baseURL() + "/playable-src/harbor-dash/game.js"}).status, 404);
}

TEST_F(SandboxServerTest, NativeAdsComeAsManyAsAskedForAndCountTheirEvents) {
  const std::string authorization = bearer();
  const auto ask = [&](const std::string& placement, int number) {
    return native(authorization, "placementId=" + placement +
                                     "&connectionType=WIFI&numOfCampaigns=" + std::to_string(number) +
                                     "&cachedCampaignIds=a&cachedCampaignIds=b" + "&creativeType=any%20text")
        .parsed();
  };
  EXPECT_EQ(ask("native-feed", 5)["result"].size(), 5U);
  EXPECT_EQ(ask("native-feed", 0)["result"], json::array());
  const json two = ask("native-feed", 2)["result"];
  ASSERT_EQ(two.size(), 2U);
  EXPECT_NE(two[0]["impressionId"], two[1]["impressionId"]);
  EXPECT_NE(two[0]["impressionId"], ask("native-feed", 1)["result"][0]["impressionId"]);
  EXPECT_EQ(ask("unheard-of", 1)["error"], "No native ads available.");

  const std::string url = server.baseURL() + "/api/impressions/" + two[1]["impressionId"].get<std::string>();
  for (const char* report : {"", "/started", "/finished", "/click?q=x"}) {
    const std::vector<std::string> headers{"Content-Type: application/json", authorization};
    EXPECT_EQ(send({url + report, headers, ""}).parsed()["status"], "success") << report;
  }
  std::vector<std::string> kinds;
  for (const auto& event : server.events()) {
    EXPECT_EQ(event["placement"], "native-feed");
    kinds.push_back(event["kind"]);
  }
  EXPECT_EQ(kinds, (std::vector<std::string>{"impression", "started", "finished", "click"}));

  const json thousand = ask("native-hostile-images", 5)["result"][4]["assets"];
  ASSERT_EQ(thousand.size(), 1000U);
  EXPECT_EQ(send({thousand[999]["url"]}).contentType, "image/png");
  EXPECT_NE(thousand[998]["url"], thousand[999]["url"]);
  EXPECT_EQ(ask("native-hostile-types", 5)["result"][0]["impressionId"], 7);
}

TEST_F(SandboxServerTest, HoldsAdRequestsToTheirQuery) {
  const std::string authorization = bearer();
  const std::string good = "placementId=native-row&connectionType=WIFI&numOfCampaigns=1";
  const auto refusal = [](const Reply& reply) {
    EXPECT_EQ(reply.status, 400);
    return reply.parsed().value("error", "");
  };
  EXPECT_EQ(native(authorization, good).status, 200);
  EXPECT_EQ(refusal(native(authorization, "creativeType=both&" + good)),
            "query keys must come in the order placementId, connectionType, numOfCampaigns, "
            "cachedCampaignIds, creativeType");
  EXPECT_EQ(refusal(native(authorization, good + "&creativeType=a&creativeType=b")),
            "query key \"creativeType\" must be there once, is 2 times");
  EXPECT_EQ(refusal(native(authorization, good + "&colour=red")), "query key \"colour\" is unknown");
  EXPECT_EQ(refusal(campaigns(authorization, good + "&creativeType=both")),
            "query key \"creativeType\" is unknown");
}

TEST_F(SandboxServerTest, PopupsComeAsOfferAndTemplate) {
  const std::string authorization = bearer();
  const std::vector<std::string> headers{"Content-Type: application/json", authorization};
  const Ask popup{server.baseURL() + "/api/rewardedPopup", headers};
  Ask offer{server.baseURL() + "/api/offers/offer-main", headers};
  offer.headers.emplace_back("User-Agent: Phone");
  const json offered = send(offer).parsed();
  EXPECT_EQ(offered["offer"]["coins"], 120);
  EXPECT_EQ(send({offered["trackingUrl"]}).status, 200);
  const std::string url =
      server.baseURL() + "/api/impressions/" + offered["impressionId"].get<std::string>() + "/click?";
  EXPECT_EQ(send({url, headers, ""}).parsed()["status"], "success");
  EXPECT_EQ(server.events().back()["placement"], "offer-main");

  const std::string whole = send(popup).body;
  server.setFaults({{"path", "/api/rewardedPopup"}, {"fault", "notUTF8"}});
  const std::string broken = send(popup).body;
  EXPECT_EQ(broken.size(), whole.size() + 2);
  EXPECT_THROW(static_cast<void>(json(broken).dump()), json::type_error) << "UTF-8 after all";
  server.setFaults({{"path", "/api/rewardedPopup"}, {"fault", "textReplaced"}});
  EXPECT_EQ(send(popup).body.find("{{coins}}"), std::string::npos);
  server.setFaults(
      {{"path", "/api/offers/"}, {"fault", "textReplaced"}, {"what", "coins\""}, {"with", "coins coins\""}});
  EXPECT_EQ(send(offer).parsed()["offer"]["coins coins"], 120);
  server.setFaults({{"path", "/api/offers/"}, {"fault", "wrongTypes"}, {"where", "fields"}});
  EXPECT_TRUE(send(offer).parsed()["offer"].is_array());
}

TEST_F(SandboxServerTest, HoldsTheOfferWallToItsAddress) {
  const auto wall = [&](const std::string& query) {
    return send({server.baseURL() + "/ioswidget/" + query, {"User-Agent: Mozilla/5.0"}});
  };
  const std::string good = "?appid=wall-main&userid=a%20b&idfa=&pub_click_id=";
  const Reply page = wall(good);
  EXPECT_EQ(page.contentType, "text/html; charset=utf-8");
  EXPECT_NE(page.body.find("\"" + server.baseURL() + "/track/wall.html\""), std::string::npos);
  EXPECT_EQ(server.requests().back()["target"], "/ioswidget/" + good);
  EXPECT_EQ(wall("?appid=a&userid=&idfa=6BA7B810-9DAD-11D1-80B4-00C04FD430C8&pub_click_id=c").status, 200);
  EXPECT_EQ(send({server.baseURL() + "/track/wall.html?offer=x&userid=a%20b"}).status, 200);

  const std::vector<std::pair<std::string, std::string>> wrong{
      {"?userid=&appid=a&idfa=&pub_click_id=", "are \"userid, appid, idfa, pub_click_id\""},
      {"?appid=a&userid=x&y&idfa=&pub_click_id=", "are \"appid, userid, y, idfa, pub_click_id\""},
      {"?appid=&userid=&idfa=&pub_click_id=", "appid must be a placement, is empty"},
      {"?appid=a&userid=&idfa=6ba7b810-9dad-11d1-80b4-00c04fd430c8&pub_click_id=", "idfa must be"},
      {"?appid=a&userid=%c3%a9&idfa=&pub_click_id=", "must be percent-escaped"}};
  for (const auto& [query, violation] : wrong) {
    const Reply refused = wall(query);
    EXPECT_EQ(refused.status, 400);
    EXPECT_NE(refused.parsed().value("error", "").find(violation), std::string::npos) << refused.body;
  }
  server.setFaults({{"path", "/ioswidget/"}, {"fault", "noFill"}});
  EXPECT_NE(wall(good).body.find("href=\"closead://"), std::string::npos);
  server.setFaults({{"path", "/ioswidget/"}, {"fault", "redirect"}, {"to", "click://http%3A%2F%2Fx"}});
  EXPECT_EQ(wall(good).status, 302);
}

TEST_F(SandboxServerTest, SaysWhichRuleARequestBreaks) {
  json body = deviceBody();
  body["rooted"] = "no";
  body["extra"] = 1;
  body.erase("model");
  const Reply reply = init(body);
  EXPECT_EQ(reply.parsed()["status"], "error");
  EXPECT_EQ(server.requests().back()["violations"],
            json({"body key \"model\" is missing", "body key \"rooted\" must be a boolean, is \"no\"",
                  "body key \"extra\" is unknown"}));

  const Reply stranger = campaigns("Authorization: Bearer nonsense", rewarded);
  EXPECT_NE(stranger.parsed()["error"].get<std::string>().find("\"nonsense\" was not handed out"),
            std::string::npos);
  EXPECT_NE(campaigns("Accept: */*", rewarded).body.find("Authorization is missing"), std::string::npos);

  const std::string authorization = bearer();
  EXPECT_NE(campaigns(authorization, "placementId=p&numOfCampaigns=1").body.find("connectionType"),
            std::string::npos);
  const Reply overdressed =
      send({server.baseURL() + "/api/canReward/p", {"Content-Type: application/json", authorization}});
  EXPECT_NE(overdressed.body.find("Content-Type must be absent"), std::string::npos);
  EXPECT_EQ(send({server.baseURL() + "/api/canReward/p%201", {authorization}}).body, "true");
  EXPECT_EQ(server.requests().back()["target"], "/api/canReward/p%201");
  EXPECT_EQ(server.requests().back()["violations"], json::array());
  EXPECT_NE(send({server.baseURL() + "/media/sky-harbor.mp4", {authorization}}).status, 200)
      << "token leaked to files";
}

TEST_F(SandboxServerTest, FilesOutsideTheCatalogueStayThere) {
  for (const char* path :
       {"/static/../init.json", "/static/%2e%2e/%2e%2e/main.cpp", "/init.json", "/media/%00"}) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);  // raw: curl tidies such paths up
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const std::string url = server.baseURL();
    address.sin_port = htons(static_cast<uint16_t>(std::stoi(url.substr(url.rfind(':') + 1))));
    ASSERT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    const std::string request =
        std::string("GET ") + path + " HTTP/1.1\r\nHost: h\r\nConnection: close\r\n\r\n";
    ASSERT_EQ(::send(fd, request.data(), request.size(), MSG_NOSIGNAL), static_cast<ssize_t>(request.size()));
    std::array<char, 16> head{};
    ::recv(fd, head.data(), 12, MSG_WAITALL);
    ::close(fd);
    EXPECT_EQ(std::string(head.data()).substr(0, 10), "HTTP/1.1 4") << path;
  }
}

TEST_F(SandboxServerTest, EveryFaultDoesItsHarm) {
  const auto strike = [&](const char* name, json parameters = json::object()) {
    parameters["path"] = "/api/canView/";
    parameters["fault"] = name;
    parameters["times"] = 1;
    server.setFaults(parameters);
    return send({server.baseURL() + "/api/canView/p", {bearer()}});
  };
  EXPECT_EQ(strike("noFill").body, "false");
  EXPECT_EQ(strike("serviceError", {{"text", "Closed."}}).parsed()["error"], "Closed.");
  EXPECT_TRUE(strike("notJSON").parsed().is_discarded());
  EXPECT_EQ(strike("wrongTypes").parsed()["status"], true);
  EXPECT_EQ(strike("successWithStatus500").status, 500);
  EXPECT_EQ(strike("delay", {{"seconds", 0.01}}).body, "true");
  EXPECT_EQ(strike("bodyCutShort").code, CURLE_PARTIAL_FILE);
  EXPECT_EQ(strike("bodyTruncated", {{"bytes", 3}}).body, "tru");
  EXPECT_EQ(strike("connectionReset").code, CURLE_RECV_ERROR);
  EXPECT_EQ(strike("connectionReset", {{"afterBytes", 2}}).body, "tr");
  EXPECT_EQ(strike("serverCloses").code, CURLE_GOT_NOTHING);
  EXPECT_EQ(strike("redirectLoop").status, 302);
  EXPECT_EQ(strike("redirect", {{"to", "file:///etc/hostname"}}).status, 302);
  EXPECT_EQ(strike("emptyBody").body, "");
  EXPECT_NE(strike("hugeHeaders").code, CURLE_OK) << "curl's own bound";
  EXPECT_EQ(strike("deepJSON", {{"depth", 1000}}).body.size(), 2028U);
  EXPECT_EQ(strike("notFound").status, 404);
  EXPECT_EQ(send({server.baseURL() + "/api/canView/p", {bearer()}}).body, "true") << "once only";

  server.setFaults({{{"path", "/api/init"}, {"fault", "wrongTypes"}, {"where", "fields"}}});
  const json wrong = init().parsed();
  EXPECT_EQ(wrong["status"], "success");
  EXPECT_TRUE(wrong["token"].is_number());
  EXPECT_TRUE(wrong["placements"][0]["id"].is_number());

  for (const json& nonsense : {json{{"path", "/"}, {"fault", "nonsense"}}, json{{"fault", "noFill"}},
                               json{{"path", "/"}, {"fault", "delay"}, {"seconds", "1"}},
                               json{{"path", "/"}, {"fault", "noFill"}, {"colour", 1}}}) {
    EXPECT_THROW(server.setFaults(nonsense), std::invalid_argument) << nonsense;
    EXPECT_EQ(
        send({server.baseURL() + "/sandbox/faults", {"Content-Type: application/json"}, nonsense.dump()})
            .status,
        400);
  }
}

TEST_F(SandboxServerTest, StopsAtOnceWhateverIsGoingOn) {
  server.setFaults(json::array({{{"path", "/silent"}, {"fault", "neverAnswers"}},
                                {{"path", "/endless"}, {"fault", "endlessBody"}, {"seconds", 0.001}},
                                {{"path", "/late"}, {"fault", "delay"}, {"seconds", 3600}}}));
  std::vector<std::thread> clients;
  for (const char* path : {"/silent", "/endless", "/late"}) {
    clients.emplace_back([this, path] {
      EXPECT_NE(send({server.baseURL() + path, {}, {}, 300}).code, CURLE_OK);
    });
    EXPECT_TRUE(server.waitForRequest([&](const json& request) { return request["path"] == path; }));
  }
  std::thread waiting([this] {
    EXPECT_FALSE(server.waitForRequest([](const json&) { return false; }, std::chrono::hours(1)));
  });
  server.stop();
  server.stop();
  for (auto& client : clients) client.join();
  waiting.join();
}

TEST(SandboxTest, TLSIsTrustedOnlyByItsCertificate) {
  Server server(Options{.tls = true});
  server.start();
  server.setAnswer("/hello", 200, "text/plain", "hello");
  const std::string url = server.baseURL() + "/hello";
  EXPECT_EQ(send({.url = url, .certificates = server.certificatePEM()}).body, "hello");
  EXPECT_EQ(send({.url = url}).code, CURLE_PEER_FAILED_VERIFICATION);
  server.setFaults({{"path", "/"}, {"fault", "bodyCutShort"}});
  EXPECT_NE(send({.url = url, .certificates = server.certificatePEM()}).code, CURLE_OK);
}

TEST(SandboxTest, RefusesWhatItCannotServe) {
  Server server{Options{}};
  server.start();
  const std::string url = server.baseURL();
  Server second(Options{.port = std::stoi(url.substr(url.rfind(':') + 1))});
  EXPECT_THROW(second.start(), std::runtime_error);
  EXPECT_THROW(Server(Options{.catalogue = "no-such-folder"}), std::runtime_error);

  const auto folder = std::filesystem::path(testing::TempDir()) / "vantorium-sandbox-malformed";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "init.json") << "{\n  \"status\": oops\n}";
  try {
    Server malformed(Options{.catalogue = folder});
    FAIL() << "accepted";
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("init.json: parse error at line 2"), std::string::npos)
        << error.what();
  }
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace vantorium::sandbox
