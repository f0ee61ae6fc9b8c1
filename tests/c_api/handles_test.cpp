// Handles and arguments of the C API: whatever is given as one is recognised, and nothing wrong is followed.
#include <array>
#include <atomic>
#include <thread>

#include "c_api/c_world.hpp"

namespace vantorium::testing {
namespace {

TEST(CHandles, CountReferencesAndAreNeverUsedTwice) {
  auto* const options = vantorium_native_ad_options_new();
  EXPECT_EQ(vantorium_retain(options), options);
  EXPECT_TRUE(vantorium_release(options));
  EXPECT_TRUE(vantorium_native_ad_options_set_creative_type(options, "video"));
  EXPECT_STREQ(vantorium_native_ad_options_creative_type(options), "video");
  EXPECT_TRUE(vantorium_release(options));
  EXPECT_FALSE(vantorium_release(options)) << "given up twice";
  EXPECT_EQ(vantorium_retain(options), nullptr);
  EXPECT_EQ(vantorium_native_ad_options_creative_type(options), nullptr);
  EXPECT_NE(textOf(vantorium_last_error()).find("given up"), std::string::npos);
  const Owned<vantorium_native_ad_options> next(vantorium_native_ad_options_new());
  EXPECT_NE(static_cast<vantorium_native_ad_options*>(next), options);
  EXPECT_FALSE(vantorium_native_ad_options_set_creative_type(options, "stale"));
  EXPECT_STREQ(vantorium_native_ad_options_creative_type(next), "both");
}

TEST(CHandles, OfNoUseAreRefusedWithAReason) {
  int somewhere = 0;
  const Owned<vantorium_server_parameter> other(vantorium_server_parameter_new());
  const std::array<std::pair<void*, const char*>, 3> bad{{
      {nullptr, "\"ad\" is null"},
      {&somewhere, "is no handle"},
      {static_cast<vantorium_server_parameter*>(other), "is a handle of a server parameter"},
  }};
  for (const auto& [handle, why] : bad) {
    auto* const ad = static_cast<vantorium_native_ad*>(handle);
    vantorium_clear_last_error();
    EXPECT_EQ(vantorium_native_ad_get_asset_at(ad, 0), nullptr);
    EXPECT_NE(textOf(vantorium_last_error()).find(why), std::string::npos) << textOf(vantorium_last_error());
    EXPECT_EQ(vantorium_error_code(vantorium_last_error()), VANTORIUM_ERROR_INTERNAL);
    EXPECT_STREQ(vantorium_error_domain(vantorium_last_error()), VANTORIUM_ERROR_DOMAIN);
    EXPECT_EQ(vantorium_native_ad_get_text(ad, VANTORIUM_NATIVE_AD_APP_NAME), nullptr);
    EXPECT_EQ(vantorium_native_ad_rating(ad), 0);
    EXPECT_FALSE(vantorium_native_ad_set_is_reported(ad, VANTORIUM_NATIVE_AD_CLICK_REPORTED, true));
  }
  EXPECT_TRUE(vantorium_release(nullptr));
  EXPECT_FALSE(vantorium_release(&somewhere));
  vantorium_free_text(nullptr);
}

TEST(CHandles, LastErrorIsOfItsThreadAndOutlivesNothing) {
  vantorium_clear_last_error();
  std::thread([] {
    EXPECT_FALSE(vantorium_release(&errno));
    EXPECT_NE(vantorium_last_error(), nullptr);
  }).join();
  EXPECT_EQ(vantorium_last_error(), nullptr);
  EXPECT_EQ(vantorium_error_text(nullptr), nullptr);
  auto* const error = vantorium_last_error();
  const std::string text = textOf(error);
  EXPECT_EQ(vantorium_error_code(error), VANTORIUM_ERROR_INTERNAL);
  vantorium_clear_last_error();
  EXPECT_EQ(vantorium_error_text(error), nullptr) << "it was lent until then";
  EXPECT_NE(textOf(vantorium_last_error()).find("\"error\""), std::string::npos);
}

TEST(CHandles, BelongToTheThreadsThatTheySayTheyDo) {
  const CWorld world;
  const Owned<vantorium_native_ad> ad(vantorium_native_ad_new());
  const Owned<vantorium_native_ad_view> view(vantorium_headless_native_ad_view_new(world.host, 300, 200));
  std::thread([&] {
    EXPECT_FALSE(vantorium_native_ad_set_rating(ad, 5));
    EXPECT_NE(textOf(vantorium_last_error()).find("one thread only"), std::string::npos);
    EXPECT_FALSE(vantorium_release(view)) << "the last reference to a view is given up where it was made";
    EXPECT_FALSE(vantorium_headless_set_seen(world.host, view, true));
    EXPECT_FALSE(vantorium_set_host(world.host));
    EXPECT_FALSE(vantorium_shutdown());
    EXPECT_NE(textOf(vantorium_last_error()).find("main thread"), std::string::npos);
    EXPECT_NE(vantorium_retain(ad), nullptr) << "keeping a record is for any thread";
    EXPECT_TRUE(vantorium_release(ad));
  }).join();
  EXPECT_TRUE(vantorium_native_ad_set_rating(ad, 4));
  EXPECT_EQ(vantorium_native_ad_rating(ad), 4);
}

TEST(CHandles, AreKeptAndGivenUpByManyThreadsAtOnce) {
  auto* const shared = vantorium_server_parameter_new();
  vantorium_server_parameter_set(shared, "key", "value");
  std::atomic<int> kept = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&] {
      for (int round = 0; round < 500; ++round) {
        if (vantorium_retain(shared) == nullptr) continue;
        ++kept;
        EXPECT_STREQ(vantorium_server_parameter_get(shared, "key"), "value");
        EXPECT_TRUE(vantorium_release(shared));
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(kept, 2000);
  EXPECT_TRUE(vantorium_release(shared));
  EXPECT_EQ(vantorium_retain(shared), nullptr);
}

TEST(CArguments, ThatAreWrongChangeNothing) {
  const Owned<vantorium_parameters> parameters(vantorium_parameters_new());
  EXPECT_FALSE(vantorium_parameters_set_text(parameters, nullptr, "x"));
  EXPECT_FALSE(vantorium_parameters_set_text(parameters, "key", nullptr));
  EXPECT_FALSE(vantorium_parameters_set_text(parameters, "key", "\xff\xfe"));
  EXPECT_NE(textOf(vantorium_last_error()).find("UTF-8"), std::string::npos);
  EXPECT_FALSE(vantorium_parameters_set_date(parameters, "key", INT64_MAX));
  EXPECT_FALSE(vantorium_parameters_set_date(parameters, "key", INT64_MIN));
  EXPECT_TRUE(vantorium_parameters_set_date(parameters, "key", -9'000'000'000));

  const Owned<vantorium_native_ad> ad(vantorium_native_ad_new());
  EXPECT_TRUE(vantorium_native_ad_set_text(ad, VANTORIUM_NATIVE_AD_APP_NAME, "Hike"));
  EXPECT_FALSE(vantorium_native_ad_set_text(ad, VANTORIUM_NATIVE_AD_APP_NAME, nullptr));
  EXPECT_STREQ(vantorium_native_ad_get_text(ad, VANTORIUM_NATIVE_AD_APP_NAME), "Hike");
  EXPECT_TRUE(vantorium_native_ad_set_text(ad, VANTORIUM_NATIVE_AD_APP_ICON_FILE_PATH, nullptr));
  EXPECT_EQ(vantorium_native_ad_get_text(ad, 99), nullptr);
  EXPECT_FALSE(vantorium_native_ad_is_reported(ad, -1));
  EXPECT_TRUE(vantorium_native_ad_add_category(ad, "Sports"));
  EXPECT_STREQ(vantorium_native_ad_category_at(ad, 0), "Sports");
  EXPECT_EQ(vantorium_native_ad_category_at(ad, 1), nullptr);
  const Owned<vantorium_native_ad_asset> asset(vantorium_native_ad_asset_new());
  EXPECT_TRUE(vantorium_native_ad_add_asset(ad, asset));
  EXPECT_FALSE(vantorium_native_ad_add_asset(ad, nullptr));
  EXPECT_EQ(vantorium_native_ad_assets_count(ad), 1U);
  const Owned<vantorium_native_ad_asset> same(vantorium_native_ad_get_asset_at(ad, 0));
  EXPECT_TRUE(vantorium_native_ad_asset_set_type(same, "video"));
  EXPECT_STREQ(vantorium_native_ad_asset_type(asset), "video") << "shared, not copied";

  int frees = 0;
  const auto free = [](void* data) { ++*static_cast<int*>(data); };
  EXPECT_EQ(vantorium_delegate_new(nullptr, &frees, free), nullptr);
  const vantorium_delegate_methods sizeless{};
  EXPECT_EQ(vantorium_delegate_new(&sizeless, &frees, free), nullptr);
  EXPECT_EQ(vantorium_queue_new(nullptr, &frees, free), nullptr);
  EXPECT_FALSE(vantorium_queue_async(nullptr, free, &frees, free));
  EXPECT_EQ(frees, 4) << "data of what was not made is freed";
}

TEST(CArguments, OfEntryPointsAreToldToTheCompletionInsideTheCall) {
  const CWorld world;
  auto* const gone = vantorium_queue_serial_new("gone");
  vantorium_release(gone);
  const auto check = [](const char* argument, const std::function<void(Told*)>& start) {
    Told told;
    start(&told);
    EXPECT_TRUE(told.isOver()) << argument;
    EXPECT_FALSE(told.success);
    EXPECT_EQ(told.code, VANTORIUM_ERROR_INTERNAL);
    EXPECT_NE(told.text.find(argument), std::string::npos) << told.text;
  };
  check("app_id",
        [](Told* told) { vantorium_configure(nullptr, nullptr, nullptr, Told::complete, told, Told::free); });
  check("parameters", [&](Told* told) {
    auto* const wrong = reinterpret_cast<vantorium_parameters*>(gone);
    vantorium_configure("app", wrong, nullptr, Told::complete, told, Told::free);
  });
  check("queue",
        [&](Told* told) { vantorium_precache_campaigns("p", gone, Told::complete, told, Told::free); });
  check("placement",
        [](Told* told) { vantorium_show_campaign("\xc3", nullptr, Told::complete, told, Told::free); });
  check("view", [](Told* told) {
    vantorium_populate_native_ad_view(nullptr, nullptr, nullptr, 0, Told::complete, told, Told::free);
  });
  EXPECT_FALSE(vantorium_is_configuring()) << "nothing was begun";

  Told silent;  // without a completion the data is freed all the same
  vantorium_configure(nullptr, nullptr, nullptr, nullptr, &silent, Told::free);
  EXPECT_EQ(silent.frees, 1);
  vantorium_report_native_ad_click(nullptr, nullptr);
  EXPECT_NE(textOf(vantorium_last_error()).find("impression_id"), std::string::npos);
  EXPECT_FALSE(vantorium_is_campaign_ready(nullptr));
  EXPECT_FALSE(vantorium_set_developer_settings(nullptr, nullptr, nullptr));
  EXPECT_FALSE(vantorium_set_developer_settings("ftp://x", nullptr, nullptr));
  EXPECT_FALSE(vantorium_set_cache_settings(0, 0));
  EXPECT_FALSE(vantorium_set_cache_settings(0, std::nan("")));
}

TEST(CArguments, WithoutAHostAreToldSo) {
  EXPECT_FALSE(vantorium_set_host(nullptr));
  Told told;
  vantorium_configure("app", nullptr, nullptr, Told::complete, &told, Told::free);
  EXPECT_TRUE(told.isOver());
  EXPECT_NE(told.text.find("no host"), std::string::npos) << told.text;
  vantorium_delegate_methods methods{};
  methods.size = sizeof methods;
  const Owned<vantorium_delegate> delegate(vantorium_delegate_new(&methods, nullptr, nullptr));
  EXPECT_FALSE(vantorium_set_delegate(delegate));
  EXPECT_EQ(vantorium_get_delegate(), nullptr);
  EXPECT_TRUE(vantorium_shutdown());
  EXPECT_EQ(taken(vantorium_get_log()), "");
  vantorium_auto_caching_timer_handler(nullptr);
}

}  // namespace
}  // namespace vantorium::testing
