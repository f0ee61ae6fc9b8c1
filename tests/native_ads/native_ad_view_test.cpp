#include <gtest/gtest.h>

#include "support/native_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using testing::NativeWorld;

TEST(NativeAdView, PutsTheAdIntoItsOutlets) {
  NativeWorld world;
  const auto ads = world.fetch("native-video");
  ASSERT_EQ(ads.size(), 1U);
  const auto& ad = ads[0];
  const auto view = world.show(ad);
  EXPECT_EQ(world.lines.back(), "populate true");
  const auto& outlets = view->outlets;
  EXPECT_EQ(outlets.appNameLabel.lock()->text(), "Orbit Courier");
  EXPECT_EQ(outlets.appDeveloperLabel.lock()->text(), "Small Moon Games");
  EXPECT_EQ(outlets.appDescriptionLabel.lock()->text(), ad->appDescription);
  EXPECT_EQ(outlets.reviewsLabel.lock()->text(), "18432");
  EXPECT_EQ(outlets.callToActionButton.lock()->title(), "Play");
  EXPECT_EQ(outlets.ratingView.lock()->rating(), 4.5);
  EXPECT_EQ(world.imageOf(outlets.iconImageView), ad->appIconFilePath);
  EXPECT_EQ(world.imageOf(outlets.imageView), ad->assets[1]->filePath);
  EXPECT_EQ(world.playerOf(*view)->source(), ad->assets[0]->filePath);
  EXPECT_EQ(outlets.privacyPolicyImageView.lock()->contentMode(), ui::ContentMode::scaleAspectFit);
  EXPECT_TRUE(world.awaitImage(outlets.privacyPolicyImageView, world.url("/static/native/privacy.png")));
}

TEST(NativeAdView, LoadsWhatWasNotDownloaded) {
  NativeWorld world;
  const auto ads = world.fetch("native-images", 2, false);
  ASSERT_EQ(ads.size(), 2U);
  const auto twoImages = ads[0]->assets.size() == 2 ? ads[0] : ads[1];
  const auto view = world.show(twoImages);
  EXPECT_TRUE(world.awaitImage(view->outlets.iconImageView, twoImages->appIconURL));
  EXPECT_TRUE(world.awaitImage(view->outlets.imageView, twoImages->assets[1]->URL)) << "the last one wins";

  const auto video = world.fetch("native-video", 1, false);
  world.populate(view, video[0]);
  EXPECT_EQ(world.playerOf(*view)->source(), world.url("/media/orbit-courier.mp4"));
}

TEST(NativeAdView, ReplacesEverythingWithTheNextAd) {
  NativeWorld world;
  const auto full = world.fetch("native-video")[0];
  const auto bare = world.fetchAd(json{{"cta", "Go"}});
  ASSERT_NE(bare, nullptr);
  const auto view = world.show(full);
  ASSERT_TRUE(world.awaitImage(view->outlets.privacyPolicyImageView, full->privacyPolicyImageURL));
  world.populate(view, bare);
  EXPECT_EQ(view->nativeAd(), bare);
  EXPECT_EQ(view->outlets.appNameLabel.lock()->text(), "");
  EXPECT_EQ(view->outlets.reviewsLabel.lock()->text(), "0");
  EXPECT_EQ(world.imageOf(view->outlets.iconImageView), "");
  EXPECT_EQ(world.imageOf(view->outlets.imageView), "");
  EXPECT_EQ(world.imageOf(view->outlets.privacyPolicyImageView), "");
  EXPECT_EQ(world.playerOf(*view), nullptr);
  view->didTapPrivacyPolicyImageView();
  EXPECT_EQ(world.opened(full->privacyPolicyURL), 0U);
}

TEST(NativeAdView, IconThatIsNoPictureIsLoadedAnew) {
  NativeWorld world;
  world.server.setFaults(
      {{{"path", "/static/native/cairnway-icon.png"}, {"fault", "notFound"}, {"times", 1}}});
  const auto ad = world.fetchAd(json{{"info", {{"appIcon", "{{base}}/static/native/cairnway-icon.png"}}}});
  ASSERT_NE(ad, nullptr);
  const auto view = world.show(ad);
  EXPECT_EQ(world.imageOf(view->outlets.iconImageView), "");
  EXPECT_TRUE(world.awaitImage(view->outlets.iconImageView, ad->appIconURL));
}

TEST(NativeAdView, OnlyTheLatestLoadSetsTheImage) {
  NativeWorld world;
  const auto ads = world.fetch("native-feed", 5, false);
  world.server.setFaults({{{"path", "/static/native/"}, {"fault", "neverAnswers"}, {"times", 3}}});
  const auto view = world.makeView({"iconImageView"});
  for (std::size_t number = 0; number < 3; ++number) {
    world.populate(view, ads[number]);
    ASSERT_TRUE(world.host->loop().runUntil([&] { return world.requests("/static/native/") == number + 1; }));
  }
  world.populate(view, ads[3]);
  EXPECT_TRUE(world.awaitImage(view->outlets.iconImageView, ads[3]->appIconURL));

  // A view that goes takes its load with it, and a picture that comes too late finds nobody.
  auto gone = world.makeView({"iconImageView"});
  world.populate(gone, ads[4]);
  gone.reset();
  world.host->loop().runPending();
}

TEST(NativeAdView, ReportsTheImpressionOnceItIsOnScreen) {
  NativeWorld world;
  const auto ad = world.fetch("native-row")[0];
  const auto view = world.makeView({});
  world.populate(view, ad);
  world.populate(view, ad);
  EXPECT_FALSE(ad->isImpressionReported);
  const auto parent = std::make_shared<ui::View>();
  parent->addSubview(view);
  EXPECT_FALSE(ad->isImpressionReported) << "a tree in no window";
  world.putInWindow(parent);
  EXPECT_TRUE(ad->isImpressionReported);
  parent->removeFromSuperview();
  world.putInWindow(parent);
  world.populate(view, ad);
  const auto other = world.show(ad);
  ASSERT_TRUE(world.awaitEvents("impression"));
  other->didTapCTAButton();
  ASSERT_TRUE(world.awaitEvents("click"));
  EXPECT_EQ(world.events("impression"), 1U);
}

TEST(NativeAdView, ClicksAreReportedOnceAndAnsweredAlways) {
  NativeWorld world;
  const auto ad = world.fetch("native-video")[0];
  const auto parameter = std::make_shared<VantoriumServerParameter>();
  parameter->parameters.emplace()["level"] = "3";
  const auto view = world.show(ad, {parameter, std::make_shared<VantoriumNativeAdOptions>(), nullptr});
  world.host->advance(0.1);
  const auto player = world.playerOf(*view);
  ASSERT_TRUE(player->isPlaying());
  for (int tap = 0; tap < 3; ++tap) view->outlets.callToActionButton.lock()->handleTap();
  EXPECT_FALSE(player->isPlaying());
  EXPECT_EQ(world.opened(ad->trackingURL), 3U);
  ASSERT_TRUE(world.awaitEvents("click"));
  world.host->loop().runPending();
  EXPECT_EQ(world.count("didReceiveClick native-video"), 3);
  const std::string clicks = "/api/impressions/" + ad->impressionID + "/click";
  EXPECT_TRUE(world.host->loop().runUntil([&] { return world.requests(clicks + "?level=3&") == 1; }));
  EXPECT_EQ(world.requests(clicks), 1U);
  view->outlets.privacyPolicyImageView.lock()->handleTap();
  EXPECT_EQ(world.opened(ad->privacyPolicyURL), 1U);
}

TEST(NativeAdView, MarksButDoesNotSendWhileNotConfigured) {
  NativeWorld world;
  const auto ad = world.fetch("native-video")[0];
  const auto view = world.makeView();
  world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.isConfigured = false; });
  world.populate(view, ad);
  EXPECT_EQ(world.lines.back(), "populate false " + VantoriumError::notConfigured().localizedDescription());
  EXPECT_EQ(view->nativeAd(), nullptr);
  EXPECT_EQ(view->outlets.appNameLabel.lock()->text(), "");

  world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.isConfigured = true; });
  world.populate(view, ad);
  EXPECT_FALSE(ad->isImpressionReported);
  world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.isConfigured = false; });
  world.putInWindow(view);
  view->didTapCTAButton();
  EXPECT_TRUE(ad->isImpressionReported && ad->isClickReported);
  world.sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.isConfigured = true; });
  world.populate(view, ad);
  view->didTapCTAButton();
  world.sdk->reportNativeAdVideoEnded(ad->impressionID);
  ASSERT_TRUE(world.awaitEvents("finished"));
  EXPECT_EQ(world.events("impression") + world.events("click"), 0U);
}

TEST(NativeAdView, RefusesWhatCannotBeFilled) {
  NativeWorld world;
  const auto ad = world.fetch("native-row")[0];
  world.populate(nullptr, ad);
  world.populate(world.makeView(), nullptr);
  EXPECT_EQ(std::ranges::count_if(
                world.lines, [](const auto& line) { return line.starts_with("populate false The view or"); }),
            2);
  std::thread([&] { world.populate(world.makeView({}), ad); }).join();
  EXPECT_TRUE(
      world.lines.back().starts_with("populate false Native ad views are filled on the main thread."));
}

TEST(NativeAdView, OutletsMayGoAtAnyTime) {
  NativeWorld world;
  const auto ad = world.fetch("native-video", 1, false)[0];
  const auto view = world.show(ad);
  while (!view->subviews().empty()) view->subviews().back()->removeFromSuperview();
  world.populate(view, ad);
  view->didTapCTAButton();
  world.host->advance(1);
  EXPECT_TRUE(view->outlets.mediaView.expired());
}

}  // namespace
}  // namespace vantorium
