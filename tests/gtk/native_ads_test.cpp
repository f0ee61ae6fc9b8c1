// Native ads as widgets of a GTK application, with the ad service behind them.
#include <gtest/gtest.h>

#include <vantorium/gtk_native_ads.hpp>

#include "facade/sdk.hpp"
#include "gtk/support/desktop.hpp"
#include "hosts/gtk/native.hpp"
#include "native_ads/native_ad_view.hpp"
#include "platform/ui/controls.hpp"
#include "sandbox/server.hpp"

namespace vantorium::test {
namespace {

using gtk::NativeAdView;

/// An ad laid out by code, with a widget for every outlet.
struct CodeLayout {
  explicit CodeLayout(Host& host) : ad(host) {
    for (auto* const label : {&name, &developer, &description, &reviews}) ad.append(*label);
    for (auto* const picture : {&icon, &privacy}) {
      picture->set_size_request(32, 32);
      ad.append(*picture);
    }
    image.set_size_request(100, 50);
    ad.append(image);
    ad.append(button);
    ad.append(media);
    ad.append(rating);
    const std::vector<std::pair<const char*, Gtk::Widget*>> outlets{
        {"appNameLabel", &name},    {"appDeveloperLabel", &developer}, {"appDescriptionLabel", &description},
        {"reviewsLabel", &reviews}, {"iconImageView", &icon},          {"privacyPolicyImageView", &privacy},
        {"imageView", &image},      {"callToActionButton", &button},   {"mediaView", &media},
        {"ratingView", &rating},
    };
    for (const auto& [outlet, widget] : outlets) EXPECT_EQ(ad.connectOutlet(outlet, *widget), std::nullopt);
  }

  std::shared_ptr<ui::PlayerLayer> playerLayer() const {
    return std::static_pointer_cast<ui::PlayerLayer>(ad.view()->outlets.mediaView.lock()->sublayers().at(0));
  }
  bool isPlaying() const { return playerLayer()->player() && playerLayer()->player()->isPlaying(); }

  NativeAdView ad;
  Gtk::Label name, developer, description, reviews;
  Gtk::Picture icon, privacy;
  Gtk::Image image;
  Gtk::Button button;
  Gtk::Box media, rating;
};

class NativeAdTest : public DesktopTest {
 protected:
  NativeAdTest() {
    server.start();
    ServiceConfiguration configuration;
    configuration.baseURL = server.baseURL();
    sdk->setServiceConfiguration(configuration);
    sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.autoCaching = false; });
    bool isConfigured = false;
    sdk->configure("app", std::nullopt, nullptr, [&](bool success, auto&&) { isConfigured = success; });
    EXPECT_TRUE(waitFor([&] { return isConfigured; }));
    scroller.set_child(feed);
    window.set_child(scroller);
    above.set_size_request(-1, 1000);
    below.set_size_request(-1, 1000);
    feed.append(above);
    feed.append(below);
    // Only the test scrolls.
    dynamic_cast<Gtk::Viewport&>(*scroller.get_child()).set_scroll_to_focus(false);
  }
  ~NativeAdTest() override {
    window.unset_child();
    sdk->shutdown();
  }

  std::shared_ptr<VantoriumNativeAd> fetch(const std::string& placement, bool withAssets = true) {
    const auto options = std::make_shared<VantoriumNativeAdOptions>();
    options->shouldDownloadAssets = withAssets;
    std::shared_ptr<VantoriumNativeAd> fetched;
    sdk->precacheNativeAds(placement, options, nullptr,
                           [&](const auto& ads, const auto&) { fetched = ads.at(0); });
    EXPECT_TRUE(waitFor([&] { return fetched != nullptr; }));
    return fetched;
  }
  bool fill(const NativeAdView& view, const std::shared_ptr<VantoriumNativeAd>& ad) {
    bool isFilled = false;
    const auto muted = std::make_shared<VantoriumMediaViewOptions>();
    muted->shouldMuteVideo = true;
    sdk->populateNativeAdView(view.view(), ad, {muted}, [&](bool success, auto&&) { isFilled = success; });
    return isFilled;
  }
  /// Puts the widget between two things that are each taller than the window.
  void insert(Gtk::Widget& widget) { feed.insert_child_after(widget, above); }
  void scrollTo(double y) {
    draw();
    scroller.get_vadjustment()->set_value(y);
    draw();
  }
  /// Whether a picture somewhere in the widget shows a stream.
  static bool showsVideo(Gtk::Widget& widget) {
    auto* const picture = dynamic_cast<Gtk::Picture*>(&widget);
    if (picture != nullptr && GTK_IS_MEDIA_STREAM(gtk_picture_get_paintable(picture->gobj()))) return true;
    for (Gtk::Widget* child = widget.get_first_child(); child != nullptr; child = child->get_next_sibling()) {
      if (showsVideo(*child)) return true;
    }
    return false;
  }
  std::size_t events(const std::string& kind) const {
    std::size_t found = 0;
    for (const auto& event : server.events()) found += event["kind"] == kind;
    return found;
  }

  sandbox::Server server{sandbox::Options{}};
  std::shared_ptr<Sdk> sdk = Sdk::make(host);
  Gtk::ScrolledWindow scroller;
  Gtk::Box feed{Gtk::Orientation::VERTICAL}, above, below;
};

TEST_F(NativeAdTest, FillsTheApplicationsWidgets) {
  CodeLayout layout(*host);
  window.set_child(layout.ad);
  const auto ad = fetch("native-video");
  ASSERT_TRUE(fill(layout.ad, ad));
  EXPECT_EQ(layout.ad.nativeAd(), ad);
  EXPECT_EQ(layout.name.get_text(), "Orbit Courier") << "at once";
  ASSERT_TRUE(waitFor([&] { return layout.icon.get_paintable() && layout.privacy.get_paintable(); }));
  EXPECT_EQ(layout.name.get_text(), "Orbit Courier");
  EXPECT_EQ(layout.developer.get_text(), "Small Moon Games");
  EXPECT_EQ(layout.description.get_text(), Glib::ustring(ad->appDescription));
  EXPECT_EQ(layout.reviews.get_text(), "18432");
  EXPECT_EQ(layout.button.get_label(), "Play");
  EXPECT_EQ(layout.icon.get_paintable()->get_intrinsic_width(), 512);
  EXPECT_TRUE(waitFor([&] { return layout.image.get_paintable() != nullptr; }));
  EXPECT_TRUE(
      waitFor([&] { return layout.isPlaying() && layout.playerLayer()->player()->currentTime() > 0.2; }));
  EXPECT_EQ(layout.rating.get_height(), 20);
  EXPECT_GE(layout.media.get_height(), layout.media.get_width() * 9 / 16);

  const auto bare = fetch("native-row");
  ASSERT_TRUE(fill(layout.ad, bare));
  EXPECT_EQ(layout.name.get_text(), Glib::ustring(bare->appName));
  EXPECT_EQ(layout.image.get_paintable(), nullptr) << "nothing of the ad before is left";
  EXPECT_FALSE(layout.isPlaying());
}

TEST_F(NativeAdTest, ConnectsTheOutletsOfAnInterfaceFile) {
  const auto builder = Gtk::Builder::create_from_string(R"(<interface>
    <object class="GtkBox" id="ad"><property name="orientation">vertical</property>
      <child><object class="GtkLabel" id="appNameLabel"/></child>
      <child><object class="GtkBox" id="ratingView"/></child>
      <child><object class="GtkImage" id="iconImageView"/></child>
      <child><object class="GtkLabel" id="reviewsLabel"/></child>
      <child><object class="GtkLabel" id="unrelated"><property name="label">Ad</property></object></child>
      <child><object class="GtkButton" id="callToActionButton"/></child>
    </object></interface>)");
  auto* const ad = Gtk::Builder::get_widget_derived<NativeAdView>(builder, "ad", *host);
  ASSERT_NE(ad, nullptr);
  window.set_child(*ad);
  ASSERT_TRUE(fill(*ad, fetch("native-row")));
  auto* const icon = builder->get_widget<Gtk::Image>("iconImageView");
  ASSERT_TRUE(waitFor([&] { return icon->get_paintable() != nullptr; }));
  EXPECT_EQ(builder->get_widget<Gtk::Label>("appNameLabel")->get_text(),
            Glib::ustring(ad->nativeAd()->appName));
  EXPECT_EQ(builder->get_widget<Gtk::Label>("unrelated")->get_text(), "Ad");
  EXPECT_EQ(builder->get_widget<Gtk::Button>("callToActionButton")->get_label(),
            Glib::ustring(ad->nativeAd()->callToActionText));
}

TEST_F(NativeAdTest, RefusesOutletsThatDoNotFit) {
  NativeAdView ad(*host);
  Gtk::Label label;
  const auto unknown = ad.connectOutlet("nameLabel", label);
  ASSERT_TRUE(unknown);
  EXPECT_NE(unknown->localizedDescription().find("appNameLabel"), std::string::npos)
      << "says which there are";
  const auto wrong = ad.connectOutlet("mediaView", label);
  ASSERT_TRUE(wrong);
  EXPECT_EQ(wrong->localizedDescription().rfind("The outlet \"mediaView\" takes a Gtk::Box, not a ", 0), 0U);
  EXPECT_EQ(ad.view()->outlets.mediaView.lock(), nullptr);
  Gtk::Box full;
  full.append(label);
  EXPECT_TRUE(ad.connectOutlet("ratingView", full)) << "a box that is not empty";
  EXPECT_EQ(ad.connectOutlet("appNameLabel", label), std::nullopt);
  EXPECT_TRUE(ad.connectOutlet("reviewsLabel", label)) << "the widget of another outlet";
  EXPECT_EQ(ad.connectOutlet("appNameLabel", label), std::nullopt) << "its own, anew";
}

TEST_F(NativeAdTest, SeenIsWhatTheUserCanSee) {
  CodeLayout layout(*host);
  insert(layout.ad);
  const auto ad = fetch("native-video");
  ASSERT_TRUE(fill(layout.ad, ad));
  draw();
  ASSERT_TRUE(layout.ad.get_mapped());
  // Long enough for several looks: the player can only have been started by one of them.
  const auto looks = [&](double seconds) {
    bool isOver = false;
    const auto timer = host->clock().schedule(Seconds{seconds}, false, [&] { isOver = true; });
    return waitFor([&] { return isOver; });
  };
  ASSERT_TRUE(looks(0.35));
  EXPECT_FALSE(ad->isImpressionReported) << "below the fold";
  EXPECT_FALSE(layout.isPlaying());

  scrollTo(500);
  ASSERT_TRUE(waitFor([&] { return ad->isImpressionReported; })) << "its top is seen";
  ASSERT_TRUE(looks(0.35));
  EXPECT_FALSE(layout.isPlaying()) << "its film is not";
  scrollTo(1000);
  EXPECT_TRUE(waitFor([&] { return layout.isPlaying(); }));
  scrollTo(0);
  EXPECT_TRUE(waitFor([&] { return !layout.isPlaying(); })) << "scrolled out";
  scrollTo(1000);
  EXPECT_TRUE(waitFor([&] { return layout.isPlaying(); }));
  feed.set_opacity(0);
  EXPECT_TRUE(waitFor([&] { return !layout.isPlaying(); })) << "faded out";
  feed.set_opacity(1);
  EXPECT_TRUE(waitFor([&] { return layout.isPlaying(); }));
  present(std::make_shared<ui::ViewController>(host->application()));
  EXPECT_TRUE(waitFor([&] { return !layout.isPlaying(); })) << "under a full-screen ad";
  host->application().rootViewController()->presentedViewController()->dismiss(false);
  EXPECT_TRUE(waitFor([&] { return layout.isPlaying(); }));
  window.set_visible(false);
  EXPECT_TRUE(waitFor([&] { return !layout.isPlaying(); })) << "in a window that is hidden";
  window.set_visible(true);
  EXPECT_TRUE(waitFor([&] { return layout.isPlaying(); }));
  ASSERT_TRUE(waitFor([&] { return events("impression") == 1 && events("started") == 1; }));
}

TEST_F(NativeAdTest, FollowsItsWidgetThroughStacksAndWindows) {
  CodeLayout layout(*host);
  Gtk::Stack stack;
  Gtk::Label other("Another page");
  stack.add(layout.ad, "ad");
  stack.add(other, "other");
  window.set_child(stack);
  const auto ad = fetch("native-video");
  ASSERT_TRUE(fill(layout.ad, ad));
  EXPECT_TRUE(waitFor([&] { return layout.isPlaying(); }));
  stack.set_visible_child("other");
  EXPECT_TRUE(waitFor([&] { return !layout.isPlaying(); })) << "on a page that is not shown";
  stack.remove(layout.ad);
  Gtk::Window second;
  second.set_default_size(300, 500);
  second.set_child(layout.ad);
  second.present();
  EXPECT_TRUE(waitFor([&] { return layout.isPlaying(); })) << "in another window";
  second.destroy();
  EXPECT_TRUE(waitFor([&] { return !layout.isPlaying(); }));
}

TEST_F(NativeAdTest, AnswersTapsAndKeys) {
  CodeLayout layout(*host);
  Gtk::Label symbol("»");
  Gtk::Label title;
  Gtk::Box inside;
  inside.append(title);
  inside.append(symbol);
  layout.button.set_child(inside);
  window.set_child(layout.ad);
  const auto ad = fetch("native-video");
  // Refused by the host, which says so without asking the desktop.
  ad->trackingURL = ad->privacyPolicyURL = "file:///refused";
  ASSERT_TRUE(fill(layout.ad, ad));
  ASSERT_TRUE(waitFor([&] { return layout.isPlaying(); }));
  EXPECT_EQ(title.get_text(), "Play") << "among what the application put into its button";
  EXPECT_EQ(symbol.get_text(), "»");
  g_signal_emit_by_name(layout.button.gobj(), "clicked");
  EXPECT_TRUE(ad->isClickReported);
  EXPECT_TRUE(waitFor([&] { return events("click") == 1; }));
  EXPECT_TRUE(layout.privacy.get_focusable()) << "a link can be reached by keyboard";

  draw();
  const auto player = layout.playerLayer()->player();
  ASSERT_TRUE(player->isMuted());
  double x = 0, y = 0;
  layout.media.translate_coordinates(window, layout.media.get_width() / 2.0, 30, x, y);
  EXPECT_TRUE(click(x, y, [&] { return !player->isMuted(); }));

  ad->privacyPolicyURL.clear();
  ASSERT_TRUE(fill(layout.ad, ad));
  settle();
  EXPECT_FALSE(layout.privacy.get_focusable()) << "a link that leads nowhere is none";
}

TEST_F(NativeAdTest, LeavesToTheApplicationWhatIsTheApplications) {
  CodeLayout layout(*host);
  layout.name.set_text("Loading");
  layout.reviews.set_text("no reviews yet");
  window.set_child(layout.ad);
  draw();
  EXPECT_EQ(layout.name.get_text(), "Loading") << "until there is an ad";

  // A handler of the application's that changes what it is called about, and then ends the whole row.
  layout.name.property_label().signal_changed().connect([&] { layout.description.set_text("shortened"); });
  const auto ad = fetch("native-row");
  ad->appDescription = std::string(100'000, 'x') + "\xff";
  ASSERT_TRUE(fill(layout.ad, ad));
  ASSERT_TRUE(waitFor([&] { return layout.icon.get_paintable() != nullptr; }));
  layout.reviews.set_text("(42)");
  ASSERT_TRUE(waitFor([&] { return layout.privacy.get_paintable() != nullptr; }));
  EXPECT_EQ(layout.reviews.get_text(), "(42)") << "pictures that come later do not touch it";
  EXPECT_LE(layout.description.get_text().size(), 5001U);

  auto* const fleeting = Gtk::make_managed<NativeAdView>(*host);
  Gtk::Label last;
  fleeting->append(last);
  EXPECT_EQ(fleeting->connectOutlet("appNameLabel", last), std::nullopt);
  last.property_label().signal_changed().connect([this, fleeting] { feed.remove(*fleeting); });
  feed.append(*fleeting);
  ASSERT_TRUE(fill(*fleeting, ad));
  EXPECT_TRUE(waitFor([&] { return last.get_parent() == nullptr; }));
}

TEST_F(NativeAdTest, WidgetsAndAdsMayGoAtAnyTime) {
  const auto ad = fetch("native-video", false);
  auto layout = std::make_unique<CodeLayout>(*host);
  auto other = std::make_unique<CodeLayout>(*host);
  insert(layout->ad);
  insert(other->ad);
  scrollTo(1000);
  ASSERT_TRUE(fill(layout->ad, ad));
  ASSERT_TRUE(fill(other->ad, ad)) << "the same ad in two views";
  other.reset();  // while its pictures are loaded
  draw();
  const std::weak_ptr<ui::ImageView> icon = layout->ad.view()->outlets.iconImageView;
  auto* const fleeting = Gtk::make_managed<Gtk::Picture>();
  layout->ad.append(*fleeting);
  EXPECT_EQ(layout->ad.connectOutlet("iconImageView", *fleeting), std::nullopt);
  EXPECT_TRUE(icon.expired()) << "another widget takes the outlet";
  ASSERT_TRUE(fill(layout->ad, ad));
  layout->ad.remove(*fleeting);
  ASSERT_TRUE(fill(layout->ad, ad));
  ASSERT_TRUE(waitFor([&] { return layout->ad.view()->outlets.iconImageView.expired(); }));
  ASSERT_TRUE(waitFor([&] { return ad->isImpressionReported; }));
  const auto view = layout->ad.view();
  layout.reset();
  EXPECT_TRUE(fill(NativeAdView(*host), ad)) << "a view without outlets";
  bool isFilled = false;
  sdk->populateNativeAdView(view, ad, {}, [&](bool success, auto&&) { isFilled = success; });
  EXPECT_TRUE(isFilled) << "its widget is gone, and nobody minds";
  draw();
  ASSERT_TRUE(waitFor([&] { return events("impression") == 1; }));
}

}  // namespace
}  // namespace vantorium::test
