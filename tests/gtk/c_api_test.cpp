// The C API of the GTK host, as an application in C uses it.
#include <gtest/gtest.h>

#include <thread>

#include <vantorium/gtk.h>

#include "c_api/told.hpp"
#include "gtk/support/desktop.hpp"
#include "sandbox/server.hpp"

namespace vantorium::test {
namespace {

using testing::Owned;
using testing::textOf;
using testing::Told;

class CDesktopTest : public DesktopTest {
 protected:
  CDesktopTest() {
    server.start();
    EXPECT_TRUE(vantorium_set_host(own)) << textOf(vantorium_last_error());
    EXPECT_TRUE(vantorium_set_developer_settings(server.baseURL().c_str(), nullptr, nullptr));
    vantorium_set_auto_caching(false);
  }
  ~CDesktopTest() override {
    window.unset_child();
    vantorium_shutdown();
  }

  vantorium_native_ad* fetch(const char* placement) {
    vantorium_native_ad* ad = nullptr;
    vantorium_precache_native_ads(
        placement, nullptr, nullptr,
        [](void* data, vantorium_native_ad* const* ads, std::size_t count, vantorium_error* error) {
          ASSERT_EQ(count, 1U) << textOf(error);
          *static_cast<vantorium_native_ad**>(data) =
              static_cast<vantorium_native_ad*>(vantorium_retain(ads[0]));
        },
        &ad, nullptr);
    EXPECT_TRUE(waitFor([&] { return ad != nullptr; }));
    return ad;
  }

  static constexpr vantorium_gtk_host_options options{.size = sizeof(vantorium_gtk_host_options),
                                                      .application_id = "org.vantorium.CTest",
                                                      .application_version = nullptr,
                                                      .advertising_tracking_enabled = false,
                                                      .store_url = nullptr,
                                                      .treat_loopback_as_online = true};
  sandbox::Server server{sandbox::Options{}};
  Owned<vantorium_host> own{vantorium_gtk_host_new(&options)};
};

TEST_F(CDesktopTest, FillsAnAdOfPlainWidgets) {
  Told configured;
  vantorium_configure("app", nullptr, nullptr, Told::complete, &configured, Told::free);
  ASSERT_TRUE(waitFor([&] { return configured.isOver(); }));
  const Owned<vantorium_native_ad> ad(fetch("native-video"));
  GtkWidget* const row = vantorium_gtk_native_ad_view_new(own, GTK_ORIENTATION_HORIZONTAL, 6);
  ASSERT_NE(row, nullptr);
  GtkWidget* const name = gtk_label_new("");
  gtk_box_append(GTK_BOX(row), name);
  EXPECT_TRUE(vantorium_gtk_native_ad_view_connect(row, "appNameLabel", name));
  const Owned<vantorium_native_ad_view> view(vantorium_gtk_native_ad_view_get_view(row));
  EXPECT_EQ(vantorium_gtk_native_ad_view_get_ad(row), nullptr);
  gtk_window_set_child(window.gobj(), row);
  Told filled;
  vantorium_populate_native_ad_view(view, ad, nullptr, 0, Told::complete, &filled, Told::free);
  EXPECT_TRUE(filled.isOver() && filled.success) << filled.text;
  EXPECT_STREQ(gtk_label_get_text(GTK_LABEL(name)), "Orbit Courier");
  EXPECT_TRUE(
      waitFor([&] { return vantorium_native_ad_is_reported(ad, VANTORIUM_NATIVE_AD_IMPRESSION_REPORTED); }));
  const Owned<vantorium_native_ad> shown(vantorium_gtk_native_ad_view_get_ad(row));
  EXPECT_STREQ(vantorium_native_ad_get_text(shown, VANTORIUM_NATIVE_AD_APP_NAME), "Orbit Courier");
  gtk_window_set_child(window.gobj(), nullptr);  // the box goes; the view's handle is harmless
  Told again;
  vantorium_populate_native_ad_view(view, ad, nullptr, 0, Told::complete, &again, Told::free);
  EXPECT_TRUE(again.isOver());
}

TEST_F(CDesktopTest, TakesABoxOfAnInterfaceFile) {
  const char* const file = R"(<interface><object class="GtkBox" id="ad">
      <child><object class="GtkLabel" id="appNameLabel"/></child>
      <child><object class="GtkBox" id="ratingView"/></child>
      <child><object class="GtkBox" id="callToActionButton"/></child></object></interface>)";
  GtkBuilder* const builder = gtk_builder_new_from_string(file, -1);
  auto* const box = GTK_BOX(gtk_builder_get_object(builder, "ad"));
  GtkWidget* const row = vantorium_gtk_native_ad_view_from_box(own, box, builder);
  ASSERT_EQ(row, GTK_WIDGET(box)) << textOf(vantorium_last_error());
  EXPECT_EQ(vantorium_gtk_native_ad_view_from_box(own, box, builder), nullptr) << "once";
  EXPECT_TRUE(vantorium_gtk_native_ad_view_set_star_images(row, "/a.png", "/b.png", "/c.png"));
  gtk_window_set_child(window.gobj(), row);
  g_object_unref(builder);

  vantorium_set_is_configured(true);
  const Owned<vantorium_native_ad> ad(vantorium_native_ad_new());
  vantorium_native_ad_set_text(ad, VANTORIUM_NATIVE_AD_APP_NAME, "Hike");
  const Owned<vantorium_native_ad_view> view(vantorium_gtk_native_ad_view_get_view(row));
  Told filled;
  vantorium_populate_native_ad_view(view, ad, nullptr, 0, Told::complete, &filled, Told::free);
  EXPECT_TRUE(filled.success) << filled.text;
  EXPECT_STREQ(gtk_label_get_text(GTK_LABEL(gtk_widget_get_first_child(row))), "Hike");
}

TEST_F(CDesktopTest, RefusesWhatIsOfNoUse) {
  EXPECT_EQ(vantorium_gtk_host_new(nullptr), nullptr);
  const vantorium_gtk_host_options sizeless{};
  EXPECT_EQ(vantorium_gtk_host_new(&sizeless), nullptr);
  EXPECT_NE(textOf(vantorium_last_error()).find("sizeof(vantorium_gtk_host_options)"), std::string::npos);
  EXPECT_FALSE(vantorium_gtk_attach(own, nullptr));
  EXPECT_FALSE(vantorium_gtk_attach(nullptr, window.gobj()));
  EXPECT_FALSE(vantorium_gtk_set_device_orientation(own, 7));
  EXPECT_TRUE(vantorium_gtk_set_device_orientation(own, VANTORIUM_GTK_DEVICE_LANDSCAPE_LEFT));

  GtkWidget* const plain = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  g_object_ref_sink(plain);
  GtkWidget* const row = vantorium_gtk_native_ad_view_new(own, GTK_ORIENTATION_VERTICAL, 0);
  g_object_ref_sink(row);
  EXPECT_EQ(vantorium_gtk_native_ad_view_get_view(plain), nullptr);
  EXPECT_NE(textOf(vantorium_last_error()).find("another kind"), std::string::npos);
  EXPECT_FALSE(vantorium_gtk_native_ad_view_connect(row, "noSuchOutlet", plain));
  EXPECT_FALSE(vantorium_gtk_native_ad_view_connect(row, "appNameLabel", plain)) << "a box is no label";
  EXPECT_FALSE(vantorium_gtk_native_ad_view_connect(row, "appNameLabel", nullptr));
  EXPECT_FALSE(vantorium_gtk_native_ad_view_play_video(nullptr));
  EXPECT_TRUE(vantorium_gtk_native_ad_view_pause_video(row)) << "there is nothing to pause";
  std::thread([&] {
    EXPECT_EQ(vantorium_gtk_host_new(&options), nullptr) << "GTK is for one thread";
    EXPECT_FALSE(vantorium_gtk_attach(own, window.gobj()));
    EXPECT_EQ(vantorium_gtk_native_ad_view_new(own, GTK_ORIENTATION_VERTICAL, 0), nullptr);
    EXPECT_FALSE(vantorium_gtk_native_ad_view_play_video(row));
    EXPECT_NE(textOf(vantorium_last_error()).find("main thread"), std::string::npos);
    EXPECT_FALSE(vantorium_release(own));
  }).join();
  g_object_unref(plain);
  g_object_unref(row);
}

}  // namespace
}  // namespace vantorium::test
