#include "protocol/http_client.hpp"

#include <gtest/gtest.h>

#include "support/service_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;

class HTTPClientTest : public ::testing::Test {
 protected:
  using SetUp = testing::Outcome<bool, std::optional<HTTPClient::Placements>, std::optional<Error>>;
  using Campaigns = testing::Outcome<std::vector<std::shared_ptr<Campaign>>, std::optional<Error>>;
  using Answer = testing::Outcome<bool, std::optional<Error>>;

  HTTPClient& http() { return *world_.client()->httpClient; }

  auto setUp(const json& answer) {
    world_.server.setInitAnswer(answer);
    SetUp outcome;
    http().setUp(world_.initBody(), outcome.completion());
    return outcome.get();
  }
  /// Anything as the answer to one endpoint.
  void answer(const std::string& path, const std::string& body, int status = 200) {
    world_.server.setAnswer(path, status, "application/json", body);
  }
  auto campaigns() {
    Campaigns outcome;
    http().getCampaigns("p", 1, {}, outcome.completion());
    return outcome.get();
  }
  auto ask(void (HTTPClient::*check)(const std::string&, const HTTPClient::Completion&)) {
    Answer outcome;
    (http().*check)("p", outcome.completion());
    return outcome.get();
  }
  auto report() {
    Answer outcome;
    http().reportFinished("i1", outcome.completion());
    return outcome.get();
  }
  /// "METHOD target" of everything after the init exchange.
  std::vector<std::string> sent() const {
    std::vector<std::string> lines;
    for (const auto& request : world_.requests())
      if (request["target"] != "/api/init")
        lines.push_back(request["method"].get<std::string>() + " " + request["target"].get<std::string>());
    return lines;
  }

  testing::ServiceWorld world_;
  const Error invalid_ = VantoriumError::internalError("Invalid server response.");
  /// Bodies that break the envelope, whatever the endpoint.
  const std::vector<std::string> broken_ = {"[]",
                                            "\"success\"",
                                            "{}",
                                            R"({"status":true})",
                                            R"({"status":"Success"})",
                                            R"({"status":"error"})",
                                            R"({"status":"error","error":7})"};
};

TEST_F(HTTPClientTest, SetsUpWithTheServicesAnswer) {
  const auto [success, placements, error] =
      setUp({{"status", "success"},
             {"token", "t1"},
             {"isTest", true},
             {"placements", {{{"id", "p1"}, {"type", "rewarded_video"}}, {{"type", "x"}}}}});
  EXPECT_TRUE(success);
  EXPECT_EQ(error, std::nullopt);
  EXPECT_EQ(placements,
            (HTTPClient::Placements{{{"id", "p1"}, {"type", "rewarded_video"}}, {{"type", "x"}}}));
  EXPECT_EQ(http().sessionToken(), "t1");
  EXPECT_TRUE(world_.context->flags().isTestMode);

  const json request = world_.requests().at(0);
  EXPECT_EQ(request["method"], "POST");
  EXPECT_EQ(request["target"], "/api/init");
  EXPECT_EQ(request["headers"]["Content-Type"], "application/json");
  EXPECT_FALSE(request["headers"].contains("Authorization") || request["headers"].contains("User-Agent"));
  EXPECT_EQ(request["body"], world_.initBody());
  EXPECT_EQ(request["violations"], json::array());
  EXPECT_TRUE(world_.host
                  ->awaitEvent({{"event", "console"},
                                {"line", "VANTORIUM LOG: Vantorium framework successfully initialized!"}})
                  .is_object());
}

TEST_F(HTTPClientTest, TakesFromASetUpOnlyWhatIsSound) {
  const auto token = [this](const json& answer) {
    const auto [success, placements, error] = setUp(answer);
    EXPECT_TRUE(success);
    EXPECT_EQ(placements, std::nullopt);
    return http().sessionToken();
  };
  const json mixed = {{{"id", "p1"}}, {{"id", 7}}};
  EXPECT_EQ(token({{"status", "success"}, {"token", "t"}, {"placements", mixed}, {"isTest", "yes"}}), "t");
  EXPECT_FALSE(world_.context->flags().isTestMode);
  EXPECT_EQ(token({{"status", "success"}, {"token", 7}, {"placements", "none"}}), std::nullopt);
  EXPECT_EQ(token({{"status", "success"}, {"token", "a\r\nInjected: b"}}), std::nullopt);
  EXPECT_EQ(token({{"status", "success"}, {"token", ""}, {"isTest", true}}), "");
  EXPECT_EQ(token({{"status", "success"}}), std::nullopt);
  EXPECT_TRUE(world_.context->flags().isTestMode) << "an answer without a word on it changes nothing";
}

TEST_F(HTTPClientTest, KeepsTheTokenWhenAnotherSetUpFails) {
  setUp({{"status", "success"}, {"token", "t1"}});
  for (const std::string& body : broken_) {
    const auto [success, placements, error] = setUp(json::parse(body));
    EXPECT_FALSE(success || placements);
    EXPECT_EQ(error, invalid_) << body;
  }
  EXPECT_EQ(std::get<2>(setUp({{"status", "error"}, {"error", "Go away."}})),
            VantoriumError::internalError("Go away."));
  EXPECT_EQ(http().sessionToken(), "t1");
  EXPECT_TRUE(world_.reports().empty()) << "the caller reports a failed set-up";
}

TEST_F(HTTPClientTest, SendsNothingWithoutAToken) {
  Campaigns campaigns;
  Answer view;
  Answer reward;
  Answer click;
  http().getCampaigns("p", 1, {}, campaigns.completion());
  http().canView("p", view.completion());
  http().canReward("p", reward.completion());
  http().reportClick("i", std::nullopt, click.completion());
  http().reportImpression("i");
  ASSERT_TRUE(campaigns.isThere() && view.isThere() && reward.isThere() && click.isThere());
  EXPECT_EQ(std::get<1>(campaigns.get()), VantoriumError::notConfigured());
  EXPECT_EQ(view.get(), (std::tuple{false, std::optional(VantoriumError::notConfigured())}));
  EXPECT_EQ(std::get<1>(click.get()), VantoriumError::notConfigured());

  Answer badURL;
  http().reportImpression("\xff", badURL.completion());
  EXPECT_EQ(std::get<1>(badURL.get()), VantoriumError::internalError())
      << "the URL is looked at before the token";
  EXPECT_TRUE(world_.requests().empty());
}

TEST_F(HTTPClientTest, SpeaksToEveryEndpointInItsOwnWay) {
  world_.configuredClient();
  world_.host->deviceFacts().set("model", "Linux phone");
  const auto await = [](auto outcome, auto send) {
    send(outcome.completion());
    outcome.get();
  };
  await(Campaigns(), [&](auto done) { http().getCampaigns("p 1", 3, {"a", "b%"}, done); });
  await(Campaigns(), [&](auto done) { http().getCampaigns("x&y", 1, {}, done); });
  await(Answer(), [&](auto done) { http().canView("p\u00e4", done); });
  await(Answer(), [&](auto done) { http().canReward("p", done); });
  await(Answer(), [&](auto done) { http().reportImpression("i1", done); });
  await(Answer(), [&](auto done) { http().reportVideoStarted("i1", done); });
  await(Answer(), [&](auto done) { http().reportFinished("i1", done); });
  await(Answer(), [&](auto done) { http().reportClick("i1", std::nullopt, done); });
  await(Answer(), [&](auto done) { http().reportClick("i1", {{}}, done); });
  await(Answer(), [&](auto done) { http().reportClick("i1", {{{"a", "1"}, {"q", "x y%"}}}, done); });
  EXPECT_EQ(
      sent(),
      (std::vector<std::string>{
          "GET /api/campaigns?placementId=p%201&connectionType=WIFI&numOfCampaigns=3&cachedCampaignIds=a"
          "&cachedCampaignIds=b%25",
          "GET /api/campaigns?placementId=x&y&connectionType=WIFI&numOfCampaigns=1",
          "GET /api/canView/p%C3%A4",
          "GET /api/canReward/p",
          "POST /api/impressions/i1",
          "POST /api/impressions/i1/started",
          "POST /api/impressions/i1/finished",
          "POST /api/impressions/i1/click?",
          "POST /api/impressions/i1/click?",
          "POST /api/impressions/i1/click?a=1&q=x%2520y%2525&",
      }));
  for (const auto& request : world_.requests("/api/")) {
    if (request["target"] == "/api/init") continue;
    const std::string target = request["target"];
    const json& headers = request["headers"];
    EXPECT_TRUE(headers["Authorization"].get<std::string>().starts_with("Bearer sandbox-")) << target;
    EXPECT_EQ(headers.contains("Content-Type"), !target.starts_with("/api/can")) << target;
    EXPECT_EQ(headers.value("User-Agent", ""), target.starts_with("/api/campaigns") ? "Linux phone" : "")
        << target;
    EXPECT_TRUE(request["body"].is_null() || request["body"] == "") << target;
  }
}

TEST_F(HTTPClientTest, NamesEachAdThatIsThereOnceAndAsManyAsFit) {
  world_.configuredClient();
  std::vector<std::string> ids{"first", std::string(5000, 'x'), "first", "\u00e4\u00e4"};
  for (int i = 1000; i < 1300; ++i) ids.push_back("id " + std::to_string(i));
  Campaigns outcome;
  http().getCampaigns("p", 1, ids, outcome.completion());
  outcome.get();
  testing::Outcome<std::vector<std::shared_ptr<VantoriumNativeAd>>, std::optional<Error>> ads;
  http().getNativeAds("p", {{"creativeType", std::string(1000, 'v')}}, 1, ids, ads.completion());
  ads.get();
  const std::string one = "&cachedCampaignIds=";
  for (const std::string& line : sent()) {
    const std::string target = line.substr(4);
    EXPECT_LT(target.size(), 4096U);
    EXPECT_GT(target.size(), 4096U - (one + "id%201000").size() - 1) << "there was room for one more";
    EXPECT_NE(target.find(one + "first" + one + "%C3%A4%C3%A4" + one + "id%201000" + one + "id%201001" + one),
              std::string::npos)
        << target;
  }
  EXPECT_TRUE(sent().back().ends_with("&creativeType=" + std::string(1000, 'v')));
}

TEST_F(HTTPClientTest, EndsAnAnswerThatIsTooLargeInTheTransfer) {
  world_.configuredClient();
  std::string text = R"({"status":"success","data":[{}]})";
  text.resize(HTTPClient::largestAnswer, ' ');
  answer("/api/campaigns", text);
  EXPECT_EQ(std::get<1>(campaigns()), std::nullopt);
  for (const char* path : {"/api/campaigns", "/api/rewardedPopup"}) answer(path, text + ' ');
  testing::Outcome<std::optional<std::string>, std::optional<Error>> popup;
  http().getRewardablePopup(popup.completion());
  for (const auto& error : {std::get<1>(campaigns()), std::get<1>(popup.get())}) {
    ASSERT_TRUE(error);
    EXPECT_NE(error->localizedDescription().find("more than the 4194304 bytes"), std::string::npos);
  }
}

TEST_F(HTTPClientTest, FetchesCampaigns) {
  world_.configuredClient();
  answer("/api/campaigns", R"({"status":"success","data":[{"campaignId":"a"},{"campaignId":7},{}]})", 500);
  const auto [found, error] = campaigns();
  EXPECT_EQ(error, std::nullopt) << "the status code plays no part";
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(found[0]->campaignID, "a");
  answer("/api/campaigns", R"({"status":"success","data":[]})");
  EXPECT_EQ(std::get<1>(campaigns()), VantoriumError::internalError("No campaigns available at the moment."));
  answer("/api/campaigns", R"({"status":"error","error":"text"})");
  EXPECT_EQ(std::get<1>(campaigns()), VantoriumError::internalError("text"));
  EXPECT_TRUE(world_.reports().empty());
}

TEST_F(HTTPClientTest, RefusesAnswersThatAreNotCampaigns) {
  world_.configuredClient();
  auto bodies = broken_;
  for (const char* data : {R"("data":null)", R"("data":{})", R"("data":[{},1])", R"("result":[{}])"})
    bodies.push_back(std::string(R"({"status":"success",)") + data + "}");
  for (std::size_t i = 0; i < bodies.size(); ++i) {
    answer("/api/campaigns", bodies[i]);
    const auto [found, error] = campaigns();
    EXPECT_TRUE(found.empty());
    EXPECT_EQ(error, invalid_) << bodies[i];
    const std::string line = "Invalid server response from /api/campaigns/ Response: " + bodies[i] + "\n";
    EXPECT_TRUE(world_.awaitReports(i + 1).at(i).starts_with(line)) << world_.reports().at(i);
  }
}

TEST_F(HTTPClientTest, ReportsAnswersThatAreNotJSONBeforeItCompletes) {
  world_.configuredClient();
  for (const std::string& body :
       {std::string("<html>"), std::string("{\"status\":\"\xff\"}"), std::string()}) {
    const auto before = world_.reports().size();
    answer("/api/campaigns", body);
    Campaigns outcome;
    http().getCampaigns("p", 1, {}, [&, done = outcome.completion()](auto found, auto error) {
      EXPECT_EQ(world_.reports().size(), before + 1);
      done(found, error);
    });
    const auto [found, error] = outcome.get();
    EXPECT_EQ(error->domain(), "json");
    EXPECT_TRUE(world_.reports().back().starts_with(error->errorMessage()));
  }
}

TEST_F(HTTPClientTest, TakesFiftyCampaignsAtMost) {
  world_.configuredClient();
  answer("/api/campaigns",
         json{{"status", "success"}, {"data", std::vector<json>(60, {{"hash", "h"}})}}.dump());
  EXPECT_EQ(std::get<0>(campaigns()).size(), 50U);
}

TEST_F(HTTPClientTest, AsksForPermissionInBareWords) {
  world_.configuredClient();
  const std::vector<std::pair<std::string, decltype(&HTTPClient::canView)>> checks = {
      {"/api/canView/", &HTTPClient::canView}, {"/api/canReward/", &HTTPClient::canReward}};
  for (const auto& check : checks) {
    const auto says = [&](const std::string& body) {
      answer(check.first + "p", body);
      return ask(check.second);
    };
    using Result = std::tuple<bool, std::optional<Error>>;
    EXPECT_EQ(says("TRUE"), (Result{true, std::nullopt}));
    EXPECT_EQ(says("False"), (Result{false, std::nullopt}));
    const auto before = world_.reports().size();
    EXPECT_EQ(says("true\n"), (Result{false, invalid_}));
    EXPECT_EQ(says(""), (Result{false, invalid_}));
    EXPECT_EQ(says("\xff"), (Result{false, invalid_}));
    const auto reports = world_.awaitReports(before + 3);
    const std::string line = "Invalid server response from " + check.first;
    EXPECT_TRUE(reports.at(before).starts_with(line + " Response: true\n"));
    EXPECT_TRUE(reports.at(before + 1).starts_with(line + " Response: "));
    EXPECT_TRUE(reports.at(before + 2).starts_with(line + "\n")) << reports.at(before + 2);
  }
}

TEST_F(HTTPClientTest, ReadsTheAnswerToAReportOnlyForWhoeverAsks) {
  world_.configuredClient();
  const std::string path = "/api/impressions/i1/finished";
  answer(path, R"({"status":"success"})", 500);
  EXPECT_EQ(report(), (std::tuple{true, std::optional<Error>()}));
  answer(path, R"({"status":"error","error":"text"})");
  EXPECT_EQ(std::get<1>(report()), VantoriumError::internalError("text"));
  EXPECT_TRUE(world_.reports().empty());

  answer(path, "{}");
  http().reportFinished("i1");  // read by nobody, so the next report is the first
  EXPECT_EQ(std::get<1>(report()), invalid_);
  EXPECT_TRUE(world_.awaitReports(1).at(0).starts_with("Invalid server response from " +
                                                       world_.server.baseURL() + path + " Response: {}\n"));
  answer(path, "nonsense");
  const auto error = std::get<1>(report());
  EXPECT_EQ(error->domain(), "json");
  EXPECT_TRUE(world_.awaitReports(2).at(1).starts_with(error->errorMessage()));
}

TEST_F(HTTPClientTest, EndsEveryFaultOfTheServiceInOneErrorAndGoesOn) {
  world_.configuredClient();
  for (const char* fault :
       {"notJSON", "wrongTypes", "bodyCutShort", "connectionReset", "redirectLoop", "emptyBody",
        "hugeHeaders", "deepJSON", "notFound", "serverCloses", "serviceError", "noFill"}) {
    world_.server.setFaults({{"path", "/api/"}, {"fault", fault}});
    const auto [found, error] = campaigns();
    EXPECT_TRUE(found.empty()) << fault;
    ASSERT_TRUE(error) << fault;
    EXPECT_FALSE(error->localizedDescription().empty()) << fault;
    world_.server.clearFaults();
    EXPECT_EQ(std::get<1>(ask(&HTTPClient::canView)), std::nullopt) << "after " << fault;
  }
}

TEST_F(HTTPClientTest, UploadsErrorReportsWithTheDevice) {
  world_.client()->userDefaultsClient->recordLaunch("u");
  http().logError("app", "u", "It broke: \xff\"\n0x12");
  const auto request = world_.server.waitForRequest([](const json&) { return true; });
  ASSERT_TRUE(request);
  EXPECT_EQ((*request)["target"], "/api/logError");
  EXPECT_EQ((*request)["method"], "POST");
  EXPECT_EQ((*request)["headers"]["Content-Type"], "application/json");
  EXPECT_FALSE((*request)["headers"].contains("Authorization") ||
               (*request)["headers"].contains("User-Agent"));
  const json& body = (*request)["body"];
  EXPECT_EQ(body["log"], "It broke: \uFFFD\"\n0x12");
  EXPECT_EQ(body["appId"], "app");
  EXPECT_EQ(body["userId"], "u");
  EXPECT_TRUE(body["firstInstallTime"].is_number_integer());
}

TEST_F(HTTPClientTest, SendsAReportAgainOfWhichNothingHadLeft) {
  auto service = std::make_unique<sandbox::Server>(sandbox::Options{});
  service->start();
  const std::string url = service->baseURL();
  const auto client =
      std::make_shared<HTTPClient>(world_.context, world_.client()->session, url, ClientDevice{});
  SetUp configured;
  client->setUp(world_.initBody(), configured.completion());
  ASSERT_TRUE(std::get<0>(configured.get()));
  service.reset();

  Answer reported, asked;
  client->reportImpression("i", reported.completion());
  client->canView("p", asked.completion());  // ends later than the first try of the report
  EXPECT_EQ(std::get<1>(asked.get())->domain(), "curl");
  EXPECT_FALSE(reported.isThere());
  service =
      std::make_unique<sandbox::Server>(sandbox::Options{.port = std::stoi(url.substr(url.rfind(':') + 1))});
  service->setAnswer("/api/impressions/i", 200, "application/json", R"({"status":"success"})");
  service->start();
  world_.host->advance(3.9);
  EXPECT_EQ(service->requests().size(), 0U) << "not so soon";
  world_.host->advance(2.2);
  EXPECT_TRUE(std::get<0>(reported.get()));
  EXPECT_EQ(service->requests().size(), 1U);
  service.reset();

  // The SDK ends while one waits: its completion hears of it.
  Answer lost, askedAgain;
  client->reportImpression("j", lost.completion());
  client->canView("p", askedAgain.completion());
  askedAgain.get();
  world_.shutdown();
  EXPECT_FALSE(std::get<0>(lost.get()));
}

TEST(HTTPClientWithoutMonitorTest, FetchesNoCampaigns) {
  const testing::TemporaryDirectory home;
  const auto context = std::make_shared<SdkContext>(std::make_shared<headless::Host>(
      headless::Host::Options{.home = home.path(), .hasReachabilityMonitor = false}));
  const Client client = Client::make(context, {});
  EXPECT_EQ(client.reachability, nullptr);
  std::optional<Error> error;
  client.httpClient->getCampaigns("p", 1, {}, [&](auto, auto failure) { error = failure; });
  EXPECT_EQ(error, VantoriumError::internalError());
}

}  // namespace
}  // namespace vantorium
