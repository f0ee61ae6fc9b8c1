// The popup and the offer wall, from their refusals to their one completion.
#include <gtest/gtest.h>

#include <fstream>

#include "platform/foundation/files.hpp"
#include "support/sdk_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using testing::SdkWorld;

struct ShowPages : ::testing::Test {
  SdkWorld world;
  headless::Host& host() { return *world.host; }

  std::string lastLine() const { return world.lines.empty() ? "" : world.lines.back(); }
  static std::string refused(const Error& error) { return "show false " + error.localizedDescription(); }
  bool isShowing() const { return world.sdk->context()->flags().isShowingAds; }

  void showWall(const std::optional<VantoriumServerParameter>& parameter = {}) {
    world.sdk->showOfferWall("wall-main", parameter, world.noting("show"));
  }
  void showPopup(const std::optional<VantoriumServerParameter>& parameter = {}) {
    world.sdk->showRewardablePopup("offer-main", parameter, world.noting("show"));
  }
  bool precacheTemplate() {
    world.lines.clear();
    world.sdk->precacheRewardablePopupTemplate(nullptr, world.noting("template"));
    return host().loop().runUntil([&] { return lastLine().starts_with("template "); });
  }
  bool popupShowing() {
    if (!world.configure() || !precacheTemplate()) return false;
    VantoriumServerParameter parameter;
    parameter.parameters = std::map<std::string, std::string>{{"level", "3"}};
    showPopup(parameter);
    return host().loop().runUntil([&] { return !host().snapshot().is_null(); });
  }
  bool awaitShown() {
    return host().loop().runUntil([&] { return lastLine().starts_with("show "); });
  }
  json opened(const std::string& url) { return host().awaitEvent({{"event", "openURL"}, {"url", url}}, 0.1); }
};

TEST_F(ShowPages, RefuseInsideTheCallInOrder) {
  for (const auto show : {&ShowPages::showWall, &ShowPages::showPopup}) {
    (this->*show)({});
    EXPECT_EQ(lastLine(), refused(VantoriumError::notConfigured()));
  }
  EXPECT_TRUE(precacheTemplate());
  EXPECT_EQ(lastLine(), "template false " + VantoriumError::notConfigured().localizedDescription());

  ASSERT_TRUE(world.configure());
  showPopup();
  EXPECT_EQ(lastLine(),
            refused(VantoriumError::noPrecachedDataToShow(
                "Rewardable Popup is not precached. Call precacheRewardablePopupTemplate function first.")));
  host().reachability().setState({.flags = 0});
  showWall();
  EXPECT_EQ(lastLine(), refused(VantoriumError::noInternetConnection()));
  host().reachability().setState({});
  showWall();
  EXPECT_TRUE(isShowing());
  showPopup();
  EXPECT_TRUE(lastLine().starts_with("show false Rewardable Popup is not precached."))
      << "before what is shown";
  ASSERT_TRUE(precacheTemplate());
  EXPECT_EQ(world.requests("/api/logError"), 0U) << "refusals are not reported";
  for (const auto show : {&ShowPages::showWall, &ShowPages::showPopup}) {
    (this->*show)({});
    EXPECT_EQ(lastLine(), refused(VantoriumError::functionInProgress()));
  }
  world.show(SdkWorld::rewarded);
  EXPECT_EQ(lastLine(), refused(VantoriumError::functionInProgress()));
  host().navigate("CloseAd://x");
  EXPECT_EQ(lastLine(), "show true");
  EXPECT_FALSE(isShowing());
  std::thread([&] { showPopup(); }).join();
  EXPECT_TRUE(lastLine().starts_with("show false Ads are shown from the main thread."));
}

TEST_F(ShowPages, TheWallNeedsAUserAndLeavesTheCampaignsPlacement) {
  world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.isConfigured = true; });
  showWall();
  EXPECT_EQ(lastLine(), refused(VantoriumError::notConfigured()));
  world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.isConfigured = false; });
  ASSERT_TRUE(world.configure());
  world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.showingPlacement = "p"; });
  showWall();
  host().navigate("closead:");
  EXPECT_EQ(lastLine(), "show true");
  EXPECT_EQ(world.sdk->context()->flags().showingPlacement, "p");
}

TEST_F(ShowPages, WithoutAMonitorTheWallIsRefusedAndThePopupIsNot) {
  world.hasMonitor = false;
  world.restart();
  ASSERT_TRUE(world.configure());
  showWall();
  EXPECT_EQ(lastLine(), refused(VantoriumError::internalError()));
  ASSERT_TRUE(precacheTemplate());
  showPopup();
  EXPECT_TRUE(isShowing());
  ASSERT_TRUE(host().loop().runUntil([&] { return !host().snapshot().is_null(); }));
}

TEST_F(ShowPages, TheTemplateIsFetchedOnce) {
  ASSERT_TRUE(world.configure());
  world.server.setFaults({{"path", "/api/rewardedPopup"}, {"fault", "connectionReset"}});
  ASSERT_TRUE(precacheTemplate());
  EXPECT_TRUE(lastLine().starts_with("template false "));
  world.server.setFaults({{"path", "/api/rewardedPopup"}, {"fault", "notUTF8"}});
  ASSERT_TRUE(precacheTemplate());
  EXPECT_EQ(lastLine(), "template false Invalid server response. Domain: com.vantorium Code: 2");
  world.server.clearFaults();
  const auto before = world.requests("/api/rewardedPopup");
  for (int time = 0; time < 3; ++time) {
    ASSERT_TRUE(precacheTemplate());
    EXPECT_EQ(lastLine(), "template true");
  }
  EXPECT_EQ(world.requests("/api/rewardedPopup"), before + 1);
}

TEST_F(ShowPages, ThePopupIsFilledCountedClickedAndOpened) {
  ASSERT_TRUE(popupShowing());
  EXPECT_EQ(host().snapshot()["screen"], "RewardablePopupVC");
  const json load = host().awaitEvent({{"event", "load"}, {"kind", "html"}});
  EXPECT_TRUE(load["base"].get<std::string>().ends_with("/"));
  std::ifstream file(load["base"].get<std::string>().substr(7) + "index.html");
  const std::string page(std::istreambuf_iterator<char>(file), {});
  EXPECT_NE(page.find("Sail out with Sky Harbor"), std::string::npos);
  EXPECT_NE(page.find("120"), std::string::npos);
  EXPECT_EQ(page.find("{{"), std::string::npos);
  for (const char* line :
       {"Rewardable Offer entity successufully fetched from server. Placement id: offer-main",
        "Trying to update HTML template with Rewardable Offer data. Placement id: offer-main",
        "HTML page for Rewardable Offer is prepared. Placement id: offer-main"})
    EXPECT_NE(world.sdk->context()->log().find(std::string(" : ") + line + "\n"), std::string::npos) << line;
  ASSERT_TRUE(world.awaitEvents("impression"));
  host().navigate("CLICK://whatever?the=page&says");
  EXPECT_EQ(world.lines[world.lines.size() - 2], "didReceiveClick offer-main");
  EXPECT_EQ(lastLine(), "show true");
  ASSERT_TRUE(world.awaitEvents("click"));
  EXPECT_FALSE(opened(world.server.baseURL() + "/track/sky-harbor.html?offer=popup").is_null());
  const auto isClick = [](const json& request) {
    return request["target"].get<std::string>().ends_with("/click?level=3&");
  };
  EXPECT_TRUE(world.server.waitForRequest(isClick)) << "with the parameters";
  EXPECT_FALSE(isShowing());
  EXPECT_TRUE(host().snapshot().is_null());
  EXPECT_EQ(world.events("impression"), 1U);
  EXPECT_EQ(world.events("click"), 1U);

  // Closed by the way back, which a page without a button leaves too.
  world.lines.clear();
  showPopup();
  ASSERT_TRUE(host().loop().runUntil([&] { return !host().snapshot().is_null(); }));
  host().failPage("the page's own trouble");
  EXPECT_TRUE(isShowing());
  host().tap("back");
  EXPECT_EQ(world.count("show true"), 1);
  EXPECT_EQ(world.events("click"), 1U);
}

TEST_F(ShowPages, APopupWithoutAnOfferOrAPageEndsOnTheMainQueue) {
  ASSERT_TRUE(world.configure());
  ASSERT_TRUE(precacheTemplate());
  world.server.setFaults({{"path", "/api/offers/"}, {"fault", "noFill"}});
  showPopup();
  EXPECT_EQ(lastLine(), "template true") << "not inside the call";
  ASSERT_TRUE(awaitShown());
  EXPECT_EQ(lastLine(), "show false No offers available. Domain: com.vantorium Code: 2");
  EXPECT_FALSE(isShowing());
  EXPECT_TRUE(world.server.waitForRequest([](const json& request) {
    return request["target"] == "/api/logError" &&
           request["body"]["log"].get<std::string>().starts_with("No offers available.");
  }));

  // An offer of the wrong types is an offer without values; its click leads nowhere and still closes.
  world.server.setFaults({{"path", "/api/offers/"}, {"fault", "wrongTypes"}, {"where", "fields"}});
  world.lines.clear();
  showPopup();
  ASSERT_TRUE(host().loop().runUntil([&] { return !host().snapshot().is_null(); }));
  host().navigate("click://x");
  EXPECT_EQ(world.lines, std::vector<std::string>{"show true"});

  world.server.clearFaults();
  removeAll(host().directories().caches);  // bears with the workers, which may remove something there, too
  std::ofstream(host().directories().caches) << "in the way";
  world.lines.clear();
  showPopup();
  ASSERT_TRUE(awaitShown());
  EXPECT_NE(lastLine().find("Not a directory"), std::string::npos) << lastLine();
  EXPECT_FALSE(isShowing());
}

TEST_F(ShowPages, APopupIsFilledFromTheTemplateOfItsCall) {
  ASSERT_TRUE(world.configure());
  Inventory& inventory = *world.sdk->client()->cacheClient.inventory;
  inventory.setRewardablePopup("<p>{{coins}}</p>");
  showPopup();
  inventory.setRewardablePopup("replaced");
  const json load = host().awaitEvent({{"event", "load"}, {"kind", "html"}});
  const std::filesystem::path page = load["base"].get<std::string>().substr(7) + "index.html";
  std::ifstream text(page);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(text), {}), "<p>120</p>");
  host().navigate("closead://");
  EXPECT_TRUE(host().loop().runUntil([&] {
    host().mainQueue()->async([] {});  // the worker that removes it rings no bell
    return !std::filesystem::exists(page);
  })) << "the page goes with its screen";
}

TEST_F(ShowPages, ShutdownEndsAPopupThatIsUnderWay) {
  ASSERT_TRUE(world.configure());
  ASSERT_TRUE(precacheTemplate());
  world.server.setFaults({{"path", "/api/offers/"}, {"fault", "neverAnswers"}});
  showPopup();
  world.sdk->shutdown();
  ASSERT_TRUE(awaitShown());
  EXPECT_FALSE(isShowing());
}

TEST_F(ShowPages, TheWallIsAddressedAndLeft) {
  ASSERT_TRUE(world.configure());
  const std::string widget = world.server.baseURL() + "/ioswidget/?appid=wall-main&userid=";
  showWall();
  json load = host().awaitEvent({{"event", "load"}, {"kind", "request"}});
  std::string url = load["url"];
  EXPECT_TRUE(url.starts_with(widget) && url.ends_with("&idfa=&pub_click_id=")) << url;
  EXPECT_EQ(host().snapshot()["screen"], "OfferWallVC");
  host().navigate("click://%zz");
  host().navigate("click://");
  EXPECT_TRUE(isShowing()) << "nothing to open, nothing closed";
  host().navigate("click://https%3A%2F%2Fstore.example%2Fapp");
  EXPECT_FALSE(opened("https://store.example/app").is_null());
  EXPECT_EQ(world.count("didReceiveClick wall-main"), 1);
  EXPECT_EQ(lastLine(), "show true");

  host().deviceFacts().set("trackingEnabled", true);
  host().deviceFacts().set("idfa", "aaaaaaaa-0000-4000-8000-00000000000f");
  VantoriumServerParameter parameter;
  parameter.parameters = {{"clickId", "c 1%"}, {"other", "x"}};
  showWall(parameter);
  load = host().awaitEvent({{"event", "load"}, {"kind", "request"}});
  url = load["url"];
  EXPECT_TRUE(url.ends_with("&idfa=AAAAAAAA-0000-4000-8000-00000000000F&pub_click_id=c%201%25")) << url;
  host().failPage("no way there");
  EXPECT_EQ(lastLine(), "show false no way there");
  EXPECT_FALSE(isShowing());
  EXPECT_EQ(world.events("impression"), 0U);

  showWall();
  host().tap("back");
  EXPECT_EQ(lastLine(), "show true") << "a wall that hangs can be left";
}

}  // namespace
}  // namespace vantorium
