// Native ads, and queues of the application's own, through the C API.
#include <condition_variable>
#include <mutex>

#include "c_api/c_world.hpp"

namespace vantorium::testing {
namespace {

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

}  // namespace
}  // namespace vantorium::testing
