// What callbacks of the C API may do.
#include "c_api/c_world.hpp"

namespace vantorium::testing {
namespace {

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
