#include "ad_layouts.hpp"

#include <cstdlib>
#include <initializer_list>

#include <vantorium/vantorium.hpp>

using vantorium::gtk::NativeAdView;

namespace {

constexpr int iconSize = 48, privacyIconSize = 20;  // points
constexpr int longestCallToAction = 24;             // characters, when there is room

/// Shows the target only while the condition holds for the text.
template <typename Texted>
void showWhile(Texted& source, Gtk::Widget& target, bool (*condition)(const Glib::ustring&)) {
  Glib::Binding::bind_property(
      source.property_label(), target.property_visible(), Glib::Binding::Flags::SYNC_CREATE,
      [condition](const Glib::ustring& text) { return std::optional(condition(text)); });
}

/// Advertisers leave texts out; their place closes then.
template <typename Texted>
void hideWhenEmpty(Texted& widget) {
  showWhile(widget, widget, [](const Glib::ustring& text) { return !text.empty(); });
}

/// The way to the privacy policy; without its picture it would be a place that nobody sees.
void setUpPrivacyPolicy(Gtk::Image& image) {
  const auto showOrHide = [&image] { image.set_visible(image.get_paintable() != nullptr); };
  image.property_paintable().signal_changed().connect(showOrHide);
  showOrHide();
}

void setUpCallToAction(Gtk::Button& button) {
  if (auto* const label = dynamic_cast<Gtk::Label*>(button.get_child())) {
    label->set_ellipsize(Pango::EllipsizeMode::END);
    label->set_max_width_chars(longestCallToAction);
  }
  hideWhenEmpty(button);
}

/// The SDK puts the number in; the box around it says of what.
void setUpReviews(Gtk::Label& number, Gtk::Label& unit, Gtk::Widget& box) {
  showWhile(number, box, [](const Glib::ustring& text) { return std::atoll(text.c_str()) > 0; });
  Glib::Binding::bind_property(number.property_label(), unit.property_label(),
                               Glib::Binding::Flags::SYNC_CREATE, [](const Glib::ustring& text) {
                                 return std::optional<Glib::ustring>(text == "1" ? "review" : "reviews");
                               });
}

Gtk::Label* makeLabel(const char* cssClass, int lines) {
  auto* const label = Gtk::make_managed<Gtk::Label>();
  label->add_css_class(cssClass);
  label->set_xalign(0);
  label->set_ellipsize(Pango::EllipsizeMode::END);
  if (lines > 1) {
    label->set_wrap(true);
    label->set_wrap_mode(Pango::WrapMode::WORD_CHAR);
    label->set_lines(lines);
  }
  hideWhenEmpty(*label);
  return label;
}

Gtk::Image* makeImage(int size) {
  auto* const image = Gtk::make_managed<Gtk::Image>();
  image->set_pixel_size(size);
  return image;
}

Gtk::Box* makeBox(Gtk::Orientation orientation, int spacing, std::initializer_list<Gtk::Widget*> children) {
  auto* const box = Gtk::make_managed<Gtk::Box>(orientation, spacing);
  for (Gtk::Widget* const child : children) box->append(*child);
  return box;
}

Gtk::Box* makeLine(int spacing, std::initializer_list<Gtk::Widget*> children) {
  return makeBox(Gtk::Orientation::HORIZONTAL, spacing, children);
}

/// Connects the widget to the view's outlet, and returns it.
template <typename Widget>
Widget* connected(NativeAdView& view, const char* outlet, Widget* widget) {
  if (const auto error = view.connectOutlet(outlet, *widget)) {
    g_warning("%s", error->localizedDescription().c_str());
  }
  return widget;
}

NativeAdView& makeView(vantorium::Host& host) {
  auto* const view = Gtk::make_managed<NativeAdView>(host, Gtk::Orientation::VERTICAL, 12);
  view->add_css_class("ad");
  return *view;
}

/// The mark, who advertises, and the privacy policy.
Gtk::Widget* makeTopLine(NativeAdView& view) {
  auto* const mark = Gtk::make_managed<Gtk::Label>("Ad");
  mark->add_css_class("ad-mark");
  mark->set_valign(Gtk::Align::CENTER);
  auto* const developer = connected(view, "appDeveloperLabel", makeLabel("caption", 1));
  auto* const privacy = connected(view, "privacyPolicyImageView", makeImage(privacyIconSize));
  privacy->add_css_class("privacy");
  privacy->set_halign(Gtk::Align::END);
  privacy->set_hexpand(true);
  setUpPrivacyPolicy(*privacy);
  auto* const line = makeLine(8, {mark, developer, privacy});
  line->add_css_class("top-line");
  return line;
}

/// The stars, and how many people gave them.
Gtk::Widget* makeRating(NativeAdView& view, Gtk::Orientation orientation) {
  auto* const stars = connected(view, "ratingView", Gtk::make_managed<Gtk::Box>());
  stars->set_halign(Gtk::Align::START);
  stars->set_valign(Gtk::Align::CENTER);
  auto* const number = connected(view, "reviewsLabel", makeLabel("caption", 1));
  number->set_ellipsize(Pango::EllipsizeMode::NONE);
  auto* const unit = makeLabel("caption", 1);
  auto* const reviews = makeLine(4, {number, unit});
  setUpReviews(*number, *unit, *reviews);
  return makeBox(orientation, orientation == Gtk::Orientation::HORIZONTAL ? 8 : 2, {stars, reviews});
}

/// What is advertised, and how people like it.
Gtk::Box* makeNameLine(NativeAdView& view, Gtk::Orientation rating) {
  auto* const icon = connected(view, "iconImageView", makeImage(iconSize));
  icon->add_css_class("icon");
  icon->set_overflow(Gtk::Overflow::HIDDEN);
  icon->set_valign(Gtk::Align::CENTER);
  auto* const name = connected(view, "appNameLabel", makeLabel("headline", 2));
  auto* const texts = makeBox(Gtk::Orientation::VERTICAL, 4, {name, makeRating(view, rating)});
  texts->set_hexpand(true);
  texts->set_valign(Gtk::Align::CENTER);
  return makeLine(12, {icon, texts});
}

Gtk::Button* makeCallToAction(NativeAdView& view) {
  auto* const button = connected(view, "callToActionButton", Gtk::make_managed<Gtk::Button>(" "));
  button->add_css_class("suggested-action");
  button->set_valign(Gtk::Align::CENTER);
  setUpCallToAction(*button);
  return button;
}

/// The medium is the ad's first picture; the other outlet shows its last.
Gtk::Widget* makePictures(NativeAdView& view, bool hasTwo) {
  auto* const medium = connected(view, "mediaView", Gtk::make_managed<Gtk::Box>());
  medium->add_css_class("media");
  medium->set_overflow(Gtk::Overflow::HIDDEN);
  if (!hasTwo) return medium;
  auto* const second = connected(view, "imageView", Gtk::make_managed<Gtk::Picture>());
  second->set_content_fit(Gtk::ContentFit::COVER);
  second->add_css_class("media");
  second->set_overflow(Gtk::Overflow::HIDDEN);
  // Laid over an empty box the picture takes the shape of its place, which is the medium's.
  auto* const place = Gtk::make_managed<Gtk::Overlay>();
  place->set_child(*Gtk::make_managed<Gtk::Box>());
  place->add_overlay(*second);
  auto* const pictures = makeLine(8, {medium, place});
  pictures->set_homogeneous(true);
  return pictures;
}

}  // namespace

AdLayout makeVideoLayout(vantorium::Host& host) {
  const auto builder = Gtk::Builder::create_from_resource("/org/example/NewsFeed/video_ad.ui");
  auto* const view = Gtk::Builder::get_widget_derived<NativeAdView>(builder, "ad", host);
  for (const char* const label : {"appNameLabel", "appDeveloperLabel", "appDescriptionLabel"}) {
    hideWhenEmpty(*builder->get_widget<Gtk::Label>(label));
  }
  setUpReviews(*builder->get_widget<Gtk::Label>("reviewsLabel"), *builder->get_widget<Gtk::Label>("unit"),
               *builder->get_widget<Gtk::Box>("reviews"));
  setUpPrivacyPolicy(*builder->get_widget<Gtk::Image>("privacyPolicyImageView"));
  setUpCallToAction(*builder->get_widget<Gtk::Button>("callToActionButton"));
  // A widget that nobody took would be gone with the builder.
  return {makeBox(Gtk::Orientation::VERTICAL, 0, {view}), view};
}

AdLayout makePictureLayout(vantorium::Host& host, bool hasTwo) {
  NativeAdView& view = makeView(host);
  view.append(*makeTopLine(view));
  view.append(*makePictures(view, hasTwo));
  view.append(*makeNameLine(view, Gtk::Orientation::HORIZONTAL));
  view.append(*connected(view, "appDescriptionLabel", makeLabel("summary", 3)));
  view.append(*makeCallToAction(view));
  return {&view, &view};
}

AdLayout makeRowLayout(vantorium::Host& host) {
  NativeAdView& view = makeView(host);
  view.append(*makeTopLine(view));
  Gtk::Box* const line = makeNameLine(view, Gtk::Orientation::VERTICAL);
  line->append(*makeCallToAction(view));
  view.append(*line);
  return {&view, &view};
}
