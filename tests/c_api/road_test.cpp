// The roads of an application that knows the C API alone.
#include <map>

#include "c_api/c_world.hpp"

namespace vantorium::testing {
namespace {

TEST(CEntryPoints, AreFoundBySelector) {
  const auto as = [](auto* function) { return reinterpret_cast<vantorium_function>(function); };
  const std::map<std::string, vantorium_function> expected{
      {"configureWithAppID:parameters:queue:completion:", as(vantorium_configure)},
      {"precacheCampaignsForPlacement:queue:completion:", as(vantorium_precache_campaigns)},
      {"isCampaignReadyWithPlacementID:", as(vantorium_is_campaign_ready)},
      {"canViewForPlacement:queue:completion:", as(vantorium_can_view)},
      {"autoCachingTimerHandlerWithTimer:", as(vantorium_auto_caching_timer_handler)},
      {"showCampaignForPlacement:serverParameter:completion:", as(vantorium_show_campaign)},
      {"showOfferWallForPlacement:serverParameter:completion:", as(vantorium_show_offer_wall)},
      {"showRewardablePopupForPlacement:serverParameter:completion:", as(vantorium_show_rewardable_popup)},
      {"precacheRewardablePopupTemplateWithQueue:completion:",
       as(vantorium_precache_rewardable_popup_template)},
      {"getLog", as(vantorium_get_log)},
      {"precacheNativeAdsForPlacement:options:queue:completion:", as(vantorium_precache_native_ads)},
      {"populateNativeAdViewWithView:with:options:completion:", as(vantorium_populate_native_ad_view)},
      {"reportNativeAdClickWithImpressionID:serverParameter:", as(vantorium_report_native_ad_click)},
      {"reportNativeAdImpressionWithImpressionID:", as(vantorium_report_native_ad_impression)},
      {"reportNativeAdVideoStartedWithImpressionID:", as(vantorium_report_native_ad_video_started)},
      {"reportNativeAdVideoEndedWithImpressionID:", as(vantorium_report_native_ad_video_ended)},
      {"isConfigured", as(vantorium_is_configured)},
      {"setIsConfigured:", as(vantorium_set_is_configured)},
      {"isConfiguring", as(vantorium_is_configuring)},
      {"setIsConfiguring:", as(vantorium_set_is_configuring)},
      {"isShowingAds", as(vantorium_is_showing_ads)},
      {"setIsShowingAds:", as(vantorium_set_is_showing_ads)},
      {"autoCaching", as(vantorium_auto_caching)},
      {"setAutoCaching:", as(vantorium_set_auto_caching)},
      {"delegate", as(vantorium_get_delegate)},
      {"setDelegate:", as(vantorium_set_delegate)},
      {"userIDKey", as(vantorium_user_id_key)},
      {"ageKey", as(vantorium_age_key)},
      {"genderKey", as(vantorium_gender_key)},
      {"dateOfBirthdayKey", as(vantorium_date_of_birthday_key)},
  };
  std::map<std::string, vantorium_function> known;
  for (std::size_t index = 0; const char* const selector = vantorium_selector_at(index); ++index) {
    known[selector] = vantorium_entry_point(selector);
  }
  EXPECT_EQ(known, expected);
  EXPECT_EQ(vantorium_entry_point("configure"), nullptr);
  EXPECT_EQ(vantorium_entry_point(""), nullptr);
  EXPECT_EQ(vantorium_entry_point(nullptr), nullptr);

  const CWorld world;
  using Get = bool (*)();
  using Set = void (*)(bool);
  using Key = const char* (*)();
  const auto isCaching = reinterpret_cast<Get>(vantorium_entry_point("autoCaching"));
  EXPECT_FALSE(isCaching());
  reinterpret_cast<Set>(vantorium_entry_point("setAutoCaching:"))(true);
  EXPECT_TRUE(isCaching());
  EXPECT_STREQ(reinterpret_cast<Key>(vantorium_entry_point("dateOfBirthdayKey"))(), "dateOfBirth");
}

TEST(CRoad, OfARewardedVideo) {
  CWorld world;
  Listener listener;
  auto methods = Listener::methods();
  methods.did_precache = nullptr;  // not answered
  const Owned<vantorium_delegate> delegate(vantorium_delegate_new(&methods, &listener, nullptr));
  EXPECT_TRUE(vantorium_set_delegate(delegate));
  const Owned<vantorium_delegate> same(vantorium_get_delegate());
  EXPECT_EQ(static_cast<vantorium_delegate*>(same), static_cast<vantorium_delegate*>(delegate));

  const Owned<vantorium_parameters> parameters(vantorium_parameters_new());
  vantorium_parameters_set_text(parameters, vantorium_user_id_key(), "user-ü");
  vantorium_parameters_set_integer(parameters, vantorium_age_key(), 30);
  vantorium_parameters_set_date(parameters, vantorium_date_of_birthday_key(), 0);
  Told configured, refused;
  {
    const MutexLock hold(world.answering);
    vantorium_configure("app", parameters, nullptr, Told::complete, &configured, Told::free);
    vantorium_configure("app", nullptr, nullptr, Told::complete, &refused, Told::free);
    ASSERT_TRUE(world.await([&] { return refused.isOver(); }));
    EXPECT_EQ(refused.code, VANTORIUM_ERROR_FUNCTION_IN_PROGRESS);
    EXPECT_EQ(configured.calls, 0);
  }
  ASSERT_TRUE(world.await([&] { return configured.isOver(); }));
  EXPECT_TRUE(configured.success);
  const auto body = world.server.requests().at(0)["body"];
  EXPECT_EQ(body["userId"], "user-ü");
  EXPECT_EQ(body["sdkVersion"], vantorium_version());

  EXPECT_FALSE(vantorium_is_campaign_ready("rewarded-main"));
  ASSERT_TRUE(world.precache("rewarded-main"));
  EXPECT_TRUE(vantorium_is_campaign_ready("rewarded-main"));
  const Owned<vantorium_server_parameter> level(vantorium_server_parameter_new());
  vantorium_server_parameter_set(level, "level", "3");
  Told shown;
  vantorium_show_campaign("rewarded-main", level, Told::complete, &shown, Told::free);
  EXPECT_TRUE(vantorium_is_showing_ads());
  ASSERT_TRUE(vantorium_headless_move_video(world.host, 0.2, 12)) << textOf(vantorium_last_error());
  ASSERT_TRUE(vantorium_headless_end_video(world.host, VANTORIUM_HEADLESS_VIDEO_ENDED, nullptr));
  ASSERT_TRUE(world.await([&] { return listener.lines.back() == "reward rewarded-main 50"; }));
  EXPECT_NE(taken(vantorium_headless_snapshot(world.host)).find("CampaignVC"), std::string::npos);
  ASSERT_TRUE(vantorium_headless_navigate(world.host, "closead://x"));
  ASSERT_TRUE(world.await([&] { return shown.isOver(); }));
  EXPECT_TRUE(shown.success);
  EXPECT_EQ(taken(vantorium_headless_snapshot(world.host)), "null");
  EXPECT_EQ(listener.lines,
            (std::vector<std::string>{"unconfigured 5", "configured", "reward rewarded-main 50"}));
  EXPECT_NE(taken(vantorium_headless_take_events(world.host)).find("\"presented\""), std::string::npos);
  EXPECT_EQ(taken(vantorium_headless_take_events(world.host)), "");
}

TEST(CRoad, OfTheOtherScreens) {
  CWorld world;
  Listener listener;
  const auto methods = Listener::methods();
  const Owned<vantorium_delegate> delegate(vantorium_delegate_new(&methods, &listener, nullptr));
  vantorium_set_delegate(delegate);
  ASSERT_TRUE(world.configure());
  const auto shows = [&](const char* screen) {
    return taken(vantorium_headless_snapshot(world.host)).find(screen) != std::string::npos;
  };
  Told wall, closedWall, fetched, popup;
  vantorium_show_offer_wall("wall-main", nullptr, Told::complete, &wall, Told::free);
  EXPECT_TRUE(shows("OfferWallVC"));
  EXPECT_FALSE(vantorium_headless_tap(world.host, "noSuchControl"));
  ASSERT_TRUE(vantorium_headless_tap(world.host, "back"));
  ASSERT_TRUE(world.await([&] { return wall.isOver(); }));
  EXPECT_TRUE(wall.success);
  vantorium_show_offer_wall("wall-main", nullptr, Told::complete, &closedWall, Told::free);
  ASSERT_TRUE(vantorium_headless_fail_page(world.host, "closed today"));
  ASSERT_TRUE(world.await([&] { return closedWall.isOver(); }));
  EXPECT_NE(closedWall.text.find("closed today"), std::string::npos) << closedWall.text;

  vantorium_precache_rewardable_popup_template(nullptr, Told::complete, &fetched, Told::free);
  ASSERT_TRUE(world.await([&] { return fetched.isOver() && fetched.success; }));
  vantorium_show_rewardable_popup("offer-main", nullptr, Told::complete, &popup, Told::free);
  ASSERT_TRUE(world.await([&] { return shows("RewardablePopupVC"); }));
  ASSERT_TRUE(vantorium_headless_navigate(world.host, "click://x"));
  ASSERT_TRUE(world.await([&] { return popup.isOver(); }));
  EXPECT_TRUE(popup.success) << popup.text;
  EXPECT_EQ(listener.lines.back(), "click offer-main");

  Told offline;
  ASSERT_TRUE(vantorium_headless_set_online(world.host, false));
  vantorium_show_offer_wall("wall-main", nullptr, Told::complete, &offline, Told::free);
  EXPECT_EQ(offline.code, VANTORIUM_ERROR_NO_INTERNET_CONNECTION);
  EXPECT_FALSE(vantorium_headless_finish_store(world.host));
  EXPECT_FALSE(vantorium_headless_set_device(world.host, "no JSON"));
  EXPECT_FALSE(vantorium_headless_set_device(world.host, R"({"volume":"loud"})"));
  EXPECT_TRUE(vantorium_headless_set_device(world.host, R"({"volume":0.5})"));
}

TEST(CRoad, OfReportsReachesTheService) {
  CWorld world;
  ASSERT_TRUE(world.configure());
  const auto reported = [&](const std::string& what) {
    return world.server
        .waitForRequest([&](const nlohmann::json& request) {
          return request["target"].get<std::string>().find("/api/impressions/" + what) != std::string::npos;
        })
        .has_value();
  };
  const Owned<vantorium_server_parameter> row(vantorium_server_parameter_new());
  vantorium_server_parameter_set(row, "row", "7");
  vantorium_report_native_ad_video_started("i1");
  EXPECT_TRUE(reported("i1/started"));
  vantorium_report_native_ad_video_ended("i2");
  EXPECT_TRUE(reported("i2/finished"));
  vantorium_report_native_ad_click("i3", row);
  EXPECT_TRUE(reported("i3/click?row=7"));
  vantorium_report_native_ad_impression("i4");
  EXPECT_TRUE(reported("i4"));
}

}  // namespace
}  // namespace vantorium::testing
