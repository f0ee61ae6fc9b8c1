// What the local ad service answers, endpoint by endpoint, as a client meets it on the wire.
#include "sandbox/wire_client.hpp"

namespace vantorium::sandbox {
namespace {

using namespace wire;

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

}  // namespace
}  // namespace vantorium::sandbox
