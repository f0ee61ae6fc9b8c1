// The headless host through the C API.
#include <cmath>
#include <limits>

#include "c_api/c_world.hpp"

namespace vantorium::testing {
namespace {

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

TEST(CHeadless, KeepsThingsInAFolderThatCanBeMade) {
  for (const char* home : {"", "/dev/null/home", "/proc/home"}) {
    EXPECT_EQ(vantorium_headless_host_new(home, true), nullptr) << home;
    EXPECT_NE(textOf(vantorium_last_error()).find("home"), std::string::npos);
  }
  const CWorld world;
  for (const double side : {-1.0, std::nan(""), 1e9})
    EXPECT_EQ(vantorium_headless_native_ad_view_new(world.host, 390, side), nullptr) << side;
  EXPECT_FALSE(vantorium_set_developer_settings("http://127.0.0.1:1", nullptr, "/no/such.pem"));
  EXPECT_NE(textOf(vantorium_last_error()).find("/no/such.pem"), std::string::npos);
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

}  // namespace
}  // namespace vantorium::testing
