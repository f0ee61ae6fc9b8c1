#pragma once

#include <gtkmm.h>

#include <memory>
#include <optional>
#include <string>

#include <vantorium/error.hpp>
#include <vantorium/export.h>
#include <vantorium/native_ad.hpp>

namespace vantorium {

class Host;
class VantoriumNativeAdView;

namespace gtk {

class NativeAdBinding;

/// A native ad in a GTK application: a box that holds the application's own widgets, in any arrangement, some
/// of which are connected to the ad's outlets. It is an ordinary widget: put it into a list, a stack or a
/// grid, give it style classes, fill it again with another ad. Main thread only.
///
///     auto* const row = Gtk::make_managed<vantorium::gtk::NativeAdView>(*host);
///     auto* const name = Gtk::make_managed<Gtk::Label>();
///     row->append(*name);
///     row->connectOutlet("appNameLabel", *name);
///     Vantorium::populateNativeAdView(row->view(), ad, [](bool, std::optional<Error>) {});
///
/// The outlets, and the widgets they take:
///  - `appNameLabel`, `appDeveloperLabel`, `appDescriptionLabel`, `reviewsLabel` (the bare number): a
///    `Gtk::Label`;
///  - `iconImageView`, `imageView`: a `Gtk::Picture` or `Gtk::Image`;
///  - `privacyPolicyImageView`: likewise; a tap on it opens the advertiser's privacy policy;
///  - `callToActionButton`: a `Gtk::Button`; its label, or the first label inside it, is set; a click opens
///    `trackingURL` with the desktop's browser or store, and the delegate hears of it;
///  - `mediaView`, `ratingView`: an empty `Gtk::Box`.
///
/// Every outlet is optional. A connected widget stays the application's: it may be styled, moved and
/// destroyed at any time. Once the view was filled, the SDK sets its text (5,000 characters at most), its
/// picture and what it tells assistive technology; what the application changes afterwards stays until the
/// view is filled again. Into the boxes of `mediaView` and `ratingView` it puts a view of its own: the medium
/// as wide as the box and, unless the box is given another height, as tall as a video of 16:9 (inside a
/// horizontal box give it a height: GTK wants no widget there that grows taller with its width); the stars
/// 100 by 20 points unless the box is larger.
///
/// Pictures have the size that the advertiser gave them, up to 2,048 points, so give their widgets a size:
/// `Gtk::Picture::set_content_fit` says how they fill it, `Gtk::Image` goes by its pixel size. What can be
/// shown is what GdkPixbuf decodes of PNG, JPEG, GIF and WebP, of at most 64 megapixels. Videos are shown in
/// the formats that GStreamer plays of MP4, WebM and Ogg.
///
/// The ad counts as on screen while some part of it can be seen as far as the toolkit can tell: not when it
/// is scrolled out of view, on a page of a stack that is not shown, in a window that is hidden or minimised,
/// or under a full-screen ad. That is looked at ten times a second while the widget is mapped. The video
/// plays while a part of the medium is seen in this sense, and the impression is reported when the ad is seen
/// first. The start is reported when the view is filled with a video, seen or not, or when a picture in its
/// place is seen; the end when a video that loops has been played once. Windows need no `attach` for native
/// ads.
///
/// The host, one that `makeHost` gave, outlives the widget; with another kind of host the widget stays empty
/// and says so on the console.
class VANTORIUM_API NativeAdView : public Gtk::Box {
 public:
  /// An empty box without outlets.
  explicit NativeAdView(Host& host, Gtk::Orientation orientation = Gtk::Orientation::VERTICAL,
                        int spacing = 0);
  /// For interface files, with `Gtk::Builder::get_widget_derived<NativeAdView>(builder, "ad", *host)`, where
  /// "ad" is a GtkBox: connects every object of the file whose ID is the name of an outlet. One that does not
  /// fit its outlet is left alone, with a warning on the console that says why. As with every widget of an
  /// interface file, put it into a container before the builder goes, or it goes with it.
  NativeAdView(GtkBox* box, const Glib::RefPtr<Gtk::Builder>& builder, Host& host);
  ~NativeAdView() override;

  /// Connects the widget to the outlet, in place of another. Fails with `internalError`, changing nothing,
  /// when there is no such outlet or the widget is not of a class that it takes. An ad that is shown already
  /// comes to the widget when the view is filled again.
  std::optional<Error> connectOutlet(const std::string& outlet, Gtk::Widget& widget);

  /// What `Vantorium::populateNativeAdView` fills. It may be kept longer than the widget, to no effect, but
  /// not longer than the host.
  std::shared_ptr<VantoriumNativeAdView> view() const;
  /// The ad shown; null before the view was filled.
  std::shared_ptr<VantoriumNativeAd> nativeAd() const;

  /// Plays the video, if there is one. With autoplay, and out of sight, it is decided anew within a tenth of
  /// a second.
  void playVideo();
  /// Pauses the video, likewise.
  void pauseVideo();

  /// Replaces the stars of the connected `ratingView` by pictures in these files (PNG, JPEG, GIF or WebP);
  /// one that is no picture shows nothing. They are seen when the view is filled the next time.
  void setStarImages(const std::string& emptyPath, const std::string& halfFullPath,
                     const std::string& fullPath);

 private:
  std::unique_ptr<NativeAdBinding> binding_;
};

}  // namespace gtk
}  // namespace vantorium
