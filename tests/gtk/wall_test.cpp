// The offer wall in WebKit, from the ad service and its faults to the one completion.
#include <gtest/gtest.h>

#include <optional>

#include "facade/sdk.hpp"
#include "gtk/support/desktop.hpp"
#include "sandbox/server.hpp"

namespace vantorium::test {
namespace {

class WallTest : public DesktopTest {
 protected:
  WallTest() {
    server.start();
    ServiceConfiguration configuration;
    configuration.baseURL = server.baseURL();
    configuration.widgetURL = server.baseURL();
    sdk->setServiceConfiguration(configuration);
    window.present();
  }
  ~WallTest() override { sdk->shutdown(); }

  /// Shows the wall under a fault, or under none.
  void show(const nlohmann::json& fault) {
    sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.autoCaching = false; });
    bool isConfigured = false;
    sdk->configure("app", std::nullopt, nullptr, [&](bool success, auto&&) { isConfigured = success; });
    ASSERT_TRUE(waitFor([&] { return isConfigured; }));
    server.setFaults(fault);
    sdk->showOfferWall("wall-main", std::nullopt, [this](bool success, const std::optional<Error>& error) {
      ++completions;
      succeeded = success;
      failure = error;
    });
    ASSERT_EQ(completions, 0) << (failure ? failure->localizedDescription() : "");
  }
  bool ended() {
    return waitFor([&] { return completions > 0; });
  }

  sandbox::Server server{sandbox::Options{}};
  std::shared_ptr<Sdk> sdk = Sdk::make(host);
  int completions = 0;
  bool succeeded = false;
  std::optional<Error> failure;
};

TEST_F(WallTest, ARedirectToACommandIsTheCommand) {
  show({{"path", "/ioswidget/"}, {"fault", "redirect"}, {"to", "closead://x"}});
  ASSERT_TRUE(ended());
  EXPECT_TRUE(succeeded) << failure->localizedDescription();
  settle();
  EXPECT_EQ(completions, 1);
}

TEST_F(WallTest, AWallThatFailsToLoadEndsWithTheReason) {
  show({{"path", "/ioswidget/"}, {"fault", "connectionReset"}});
  ASSERT_TRUE(ended());
  EXPECT_FALSE(succeeded);
  ASSERT_TRUE(failure);
  EXPECT_FALSE(failure->localizedDescription().empty());
  EXPECT_FALSE(sdk->context()->flags().isShowingAds);
}

TEST_F(WallTest, AWallThatHangsIsLeftByTheWayBack) {
  show({{"path", "/ioswidget/"}, {"fault", "neverAnswers"}});
  ASSERT_TRUE(waitFor([&] {
    for (const auto& request : server.requests())
      if (request["path"] == "/ioswidget/") return true;
    return false;
  }));
  auto screen = host->application().rootViewController();
  while (screen->presentedViewController()) screen = screen->presentedViewController();
  EXPECT_TRUE(screen->handleBack());
  ASSERT_TRUE(ended());
  EXPECT_TRUE(succeeded);
}

}  // namespace
}  // namespace vantorium::test
