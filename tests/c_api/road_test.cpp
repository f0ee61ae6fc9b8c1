// The roads of an application that knows the C API alone.
#include <cmath>
#include <condition_variable>
#include <limits>
#include <map>
#include <mutex>

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

/// A delegate that notes what it hears.
struct Listener {
  std::vector<std::string> lines;
  int frees = 0;
  std::function<void()> then;  ///< done inside each method

  void note(const std::string& line) {
    lines.push_back(line);
    if (then) then();
  }
  static Listener& of(void* data) { return *static_cast<Listener*>(data); }
  static vantorium_delegate_methods methods() {
    return {
        .size = sizeof(vantorium_delegate_methods),
        .did_receive_reward =
            [](void* data, const char* placement, std::int64_t amount) {
              of(data).note("reward " + std::string(placement) + " " + std::to_string(amount));
            },
        .did_precache = [](void* data,
                           const char* placement) { of(data).note("precached " + std::string(placement)); },
        .did_fail_precache =
            [](void* data, const char* placement, vantorium_error* error) {
              of(data).note("failed " + std::string(placement) + " " +
                            std::to_string(vantorium_error_code(error)));
            },
        .did_receive_click = [](void* data,
                                const char* placement) { of(data).note("click " + std::string(placement)); },
        .did_configure = [](void* data) { of(data).note("configured"); },
        .did_fail_configure =
            [](void* data, vantorium_error* error) {
              of(data).note("unconfigured " + std::to_string(vantorium_error_code(error)));
            },
    };
  }
  static void free(void* data) { ++of(data).frees; }
};

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
  vantorium_configure("app", parameters, nullptr, Told::complete, &configured, Told::free);
  EXPECT_EQ(configured.calls, 0);
  vantorium_configure("app", nullptr, nullptr, Told::complete, &refused, Told::free);
  ASSERT_TRUE(world.await([&] { return configured.isOver() && refused.isOver(); }));
  EXPECT_TRUE(configured.success);
  EXPECT_EQ(refused.code, VANTORIUM_ERROR_FUNCTION_IN_PROGRESS);
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

/// A queue whose work the test runs itself.
struct Inbox {
  std::mutex mutex;
  std::condition_variable arrived;
  std::vector<vantorium_work*> waiting;
  bool isFreed = false;

  static void async(void* data, vantorium_work* work) {
    auto& inbox = *static_cast<Inbox*>(data);
    const std::lock_guard lock(inbox.mutex);
    inbox.waiting.push_back(work);
    inbox.arrived.notify_one();
  }
  static void free(void* data) { static_cast<Inbox*>(data)->isFreed = true; }
  vantorium_work* next() {
    std::unique_lock lock(mutex);
    if (!arrived.wait_for(lock, std::chrono::seconds(30), [this] { return !waiting.empty(); }))
      return nullptr;
    auto* const work = waiting.front();
    waiting.erase(waiting.begin());
    return work;
  }
};

TEST(CRoad, OfNativeAdsThroughAQueueOfTheApplications) {
  CWorld world;
  ASSERT_TRUE(world.configure());
  Inbox inbox;
  auto* const queue = vantorium_queue_new(Inbox::async, &inbox, Inbox::free);
  const Owned<vantorium_native_ad_options> options(vantorium_native_ad_options_new());
  vantorium_native_ad_options_set_number_of_ads_to_precache(options, 9);
  vantorium_native_ad* ad = nullptr;
  vantorium_precache_native_ads(
      "native-video", options, queue,
      [](void* data, vantorium_native_ad* const* ads, std::size_t count, vantorium_error* error) {
        EXPECT_EQ(error, nullptr) << textOf(error);
        ASSERT_GT(count, 0U);
        *static_cast<vantorium_native_ad**>(data) =
            static_cast<vantorium_native_ad*>(vantorium_retain(ads[0]));
      },
      &ad, nullptr);
  EXPECT_EQ(vantorium_native_ad_options_number_of_ads_to_precache(options), 5);
  while (ad == nullptr) {  // the queue carries the SDK's own steps too
    auto* const work = inbox.next();
    ASSERT_TRUE(vantorium_work_run(work)) << textOf(vantorium_last_error());
    EXPECT_FALSE(vantorium_work_run(work)) << "run twice";
  }
  const Owned<vantorium_native_ad> kept(ad);
  EXPECT_STREQ(vantorium_native_ad_get_text(ad, VANTORIUM_NATIVE_AD_PLACEMENT_ID), "native-video");
  EXPECT_TRUE(vantorium_native_ad_has_app_icon_image(ad));
  EXPECT_GT(vantorium_native_ad_assets_count(ad), 0U);

  const Owned<vantorium_native_ad_view> view(vantorium_headless_native_ad_view_new(world.host, 390, 300));
  const Owned<vantorium_media_view_options> media(vantorium_media_view_options_new());
  EXPECT_TRUE(vantorium_media_view_options_should_autoplay_video(media));
  vantorium_media_view_options_set_should_mute_video(media, true);
  const Owned<vantorium_server_parameter> row(vantorium_server_parameter_new());
  vantorium_server_parameter_set(row, "row", "1");
  vantorium_ad_options* both[] = {VANTORIUM_AD_OPTIONS(static_cast<vantorium_media_view_options*>(media)),
                                  VANTORIUM_AD_OPTIONS(static_cast<vantorium_server_parameter*>(row))};
  Told filled;
  vantorium_populate_native_ad_view(view, ad, both, 2, Told::complete, &filled, Told::free);
  EXPECT_TRUE(filled.isOver() && filled.success) << filled.text;
  EXPECT_FALSE(vantorium_native_ad_is_reported(ad, VANTORIUM_NATIVE_AD_IMPRESSION_REPORTED));
  ASSERT_TRUE(vantorium_headless_set_seen(world.host, view, true));
  EXPECT_TRUE(vantorium_native_ad_is_reported(ad, VANTORIUM_NATIVE_AD_IMPRESSION_REPORTED));
  ASSERT_TRUE(vantorium_headless_view_tap(view, "callToActionButton"));
  EXPECT_FALSE(vantorium_headless_view_tap(view, "noSuchOutlet"));
  const auto clicked = world.server.waitForRequest([](const nlohmann::json& request) {
    return request["target"].get<std::string>().find("/click?") != std::string::npos;
  });
  ASSERT_TRUE(clicked);
  EXPECT_NE((*clicked)["target"].get<std::string>().find("row=1"), std::string::npos);
  vantorium_release(queue);
}

TEST(CQueue, OfTheApplicationsRunsItsWorkOnceOrDropsIt) {
  Inbox inbox;
  auto* const queue = vantorium_queue_new(Inbox::async, &inbox, Inbox::free);
  Told run, dropped;
  const auto work = [](void* data) { ++static_cast<Told*>(data)->calls; };
  EXPECT_TRUE(vantorium_queue_async(queue, work, &run, Told::free));
  EXPECT_TRUE(vantorium_queue_async(queue, work, &dropped, Told::free));
  EXPECT_EQ(run.calls, 0) << "never inside the call";
  EXPECT_TRUE(vantorium_work_run(inbox.next()));
  EXPECT_TRUE(run.isOver());
  EXPECT_TRUE(vantorium_release(inbox.next()));
  EXPECT_EQ(dropped.calls, 0);
  EXPECT_EQ(dropped.frees, 1) << "work that is dropped takes its data along";
  EXPECT_TRUE(vantorium_release(queue));
  EXPECT_TRUE(inbox.isFreed);
}

TEST(CCallbacks, MayCallBackIn) {
  CWorld world;
  Listener listener;
  const auto methods = Listener::methods();
  auto* const delegate = vantorium_delegate_new(&methods, &listener, Listener::free);
  vantorium_set_delegate(delegate);
  Told first, second, third;
  first.then = [&] {
    vantorium_configure("again", nullptr, nullptr, Told::complete, &second, Told::free);
    vantorium_show_campaign("nothing", nullptr, Told::complete, &third, Told::free);
    EXPECT_TRUE(third.isOver()) << "refused inside the call";
    EXPECT_EQ(third.code, VANTORIUM_ERROR_NO_PRECACHED_DATA_TO_SHOW);
    EXPECT_EQ(first.frees, 0) << "its data is in use";
  };
  listener.then = [&] {  // gives itself up while it is called
    EXPECT_TRUE(vantorium_release(delegate));
    EXPECT_EQ(listener.frees, 0);
    listener.then = nullptr;
  };
  vantorium_configure("app", nullptr, nullptr, Told::complete, &first, Told::free);
  ASSERT_TRUE(world.await([&] { return first.isOver() && second.isOver(); }));
  EXPECT_TRUE(second.success);
  EXPECT_EQ(listener.lines, (std::vector<std::string>{"configured"}));
  EXPECT_EQ(listener.frees, 1);
  EXPECT_EQ(vantorium_get_delegate(), nullptr);
}

TEST(CCallbacks, MayShutTheSDKDown) {
  for (const bool whileShowing : {false, true}) {
    CWorld world;
    ASSERT_TRUE(world.configure());
    ASSERT_TRUE(world.precache("rewarded-main"));
    Listener listener;
    const auto methods = Listener::methods();
    const Owned<vantorium_delegate> delegate(vantorium_delegate_new(&methods, &listener, nullptr));
    vantorium_set_delegate(delegate);
    Told shown, pending, refused;
    if (whileShowing) vantorium_show_campaign("rewarded-main", nullptr, Told::complete, &shown, Told::free);
    pending.then = [] { EXPECT_TRUE(vantorium_shutdown()) << "twice, and inside another's"; };
    listener.then = [&] { EXPECT_TRUE(vantorium_shutdown()); };
    vantorium_precache_native_ads(
        "native-row", nullptr, nullptr,
        [](void* data, vantorium_native_ad* const*, std::size_t, vantorium_error* error) {
          Told::complete(data, error == nullptr, error);
        },
        &pending, Told::free);
    ASSERT_TRUE(world.await([&] { return pending.isOver() && (shown.isOver() || !whileShowing); }));
    if (whileShowing) {
      EXPECT_FALSE(shown.success) << "an ad that was taken away";
    }
    EXPECT_EQ(listener.lines, (std::vector<std::string>{"precached native-row"}));
    vantorium_configure("app", nullptr, nullptr, Told::complete, &refused, Told::free);
    EXPECT_TRUE(refused.isOver());
    EXPECT_NE(refused.text.find("no host"), std::string::npos) << refused.text;
  }
}

TEST(CCallbacks, OfAllScreensHearOfTheShutdown) {
  CWorld world;
  ASSERT_TRUE(world.configure());
  ASSERT_TRUE(world.precache("rewarded-main"));
  Told campaign, wall;
  vantorium_show_campaign("rewarded-main", nullptr, Told::complete, &campaign, Told::free);
  vantorium_set_is_showing_ads(false);  // which is not so
  vantorium_show_offer_wall("wall-main", nullptr, Told::complete, &wall, Told::free);
  EXPECT_TRUE(vantorium_shutdown());
  ASSERT_TRUE(world.await([&] { return campaign.isOver() && wall.isOver(); }));
}

TEST(CHeadless, TimeGoesOnWhateverAdvancesIt) {
  const TemporaryDirectory home;
  const Owned<vantorium_host> host(vantorium_headless_host_new(home.path().c_str(), true));
  EXPECT_TRUE(vantorium_headless_advance(host, 10));
  for (const double seconds : {-1.0, std::nan(""), 1e300, std::numeric_limits<double>::infinity()})
    EXPECT_FALSE(vantorium_headless_advance(host, seconds)) << seconds;
  const auto never = [](void*) { return false; };
  EXPECT_FALSE(vantorium_headless_run_until(host, never, nullptr, std::nan("")));
  EXPECT_NE(textOf(vantorium_last_error()).find("in time"), std::string::npos);
  const auto atOnce = [](void*) { return true; };
  EXPECT_TRUE(vantorium_headless_run_until(host, atOnce, nullptr, std::numeric_limits<double>::infinity()));
  EXPECT_FALSE(vantorium_headless_run_until(host, nullptr, nullptr, 0));
  const Owned<vantorium_host> real(vantorium_headless_host_new(home.path().c_str(), false));
  EXPECT_FALSE(vantorium_headless_advance(real, 1)) << "time is real there";
}

TEST(CHeadless, ViewsOutliveTheHandleOfTheirHost) {
  CWorld world;
  ASSERT_TRUE(world.configure());
  const TemporaryDirectory home;
  auto* const host = vantorium_headless_host_new(home.path().c_str(), true);
  const Owned<vantorium_native_ad_view> view(vantorium_headless_native_ad_view_new(host, 390, 300));
  EXPECT_TRUE(vantorium_release(host));
  const Owned<vantorium_native_ad> ad(vantorium_native_ad_new());
  const Owned<vantorium_native_ad_asset> film(vantorium_native_ad_asset_new());
  vantorium_native_ad_asset_set_type(film, "video");
  vantorium_native_ad_asset_set_file_path(film, "/no/such/film.mp4");
  vantorium_native_ad_add_asset(ad, film);
  Told filled;
  vantorium_populate_native_ad_view(view, ad, nullptr, 0, Told::complete, &filled, Told::free);
  EXPECT_TRUE(filled.success) << filled.text;
  EXPECT_TRUE(vantorium_headless_view_tap(view, "callToActionButton"));
  EXPECT_TRUE(vantorium_headless_view_move_video(view, 1, 2));
  EXPECT_TRUE(vantorium_headless_view_end_video(view, VANTORIUM_HEADLESS_VIDEO_FAILED, "torn"));
  EXPECT_NE(taken(vantorium_headless_view_snapshot(view)).find("mediaView"), std::string::npos);
}

TEST(CCallbacks, KeepErrorsThatAreRetained) {
  const CWorld world;
  vantorium_error* kept = nullptr;
  vantorium_can_view(
      "p", nullptr,
      [](void* data, bool, vantorium_error* error) {
        *static_cast<vantorium_error**>(data) = static_cast<vantorium_error*>(vantorium_retain(error));
      },
      &kept, nullptr);
  ASSERT_TRUE(vantorium_headless_run_until(
      world.host, [](void* data) { return *static_cast<vantorium_error**>(data) != nullptr; }, &kept, 30));
  const Owned<vantorium_error> error(kept);
  EXPECT_EQ(vantorium_error_code(error), VANTORIUM_ERROR_NOT_CONFIGURED);
  EXPECT_EQ(textOf(error), "Vantorium framework is not configured. Domain: com.vantorium Code: 1");
  EXPECT_EQ(textOf(error), vantorium_error_message(error));
}

}  // namespace
}  // namespace vantorium::testing
