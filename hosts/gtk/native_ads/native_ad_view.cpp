#include <vantorium/gtk_native_ads.hpp>

#include "hosts/gtk/native_ads/native_ad_binding.hpp"
#include "platform/ui/image.hpp"

namespace vantorium::gtk {

namespace {

std::unique_ptr<NativeAdBinding> bind(Gtk::Widget& widget, Host& host) {
  return std::make_unique<NativeAdBinding>(widget, dynamic_cast<DesktopHost&>(host));
}

}  // namespace

NativeAdView::NativeAdView(Host& host, Gtk::Orientation orientation, int spacing)
    : Gtk::Box(orientation, spacing), binding_(bind(*this, host)) {}

NativeAdView::NativeAdView(GtkBox* box, const Glib::RefPtr<Gtk::Builder>& builder, Host& host)
    : Gtk::Box(box), binding_(bind(*this, host)) {
  for (const std::string& name : VantoriumNativeAdView::outletNames()) {
    const auto widget = std::dynamic_pointer_cast<Gtk::Widget>(builder->get_object(name));
    if (!widget) continue;
    if (const auto error = connectOutlet(name, *widget)) {
      g_warning("vantorium: %s", error->localizedDescription().c_str());
    }
  }
}

NativeAdView::~NativeAdView() = default;

std::optional<Error> NativeAdView::connectOutlet(const std::string& outlet, Gtk::Widget& widget) {
  return binding_->connect(outlet, widget);
}

const std::shared_ptr<VantoriumNativeAdView>& NativeAdView::view() const { return binding_->view(); }

std::shared_ptr<VantoriumNativeAd> NativeAdView::nativeAd() const { return binding_->view()->nativeAd(); }

void NativeAdView::playVideo() {
  if (const auto media = binding_->view()->outlets.mediaView.lock()) media->play();
}

void NativeAdView::pauseVideo() {
  if (const auto media = binding_->view()->outlets.mediaView.lock()) media->pause();
}

void NativeAdView::setStarImages(const std::string& emptyPath, const std::string& halfFullPath,
                                 const std::string& fullPath) {
  const auto rating = binding_->view()->outlets.ratingView.lock();
  if (!rating) return;
  rating->emptyStarImage = ui::Image::contentsOfFile(emptyPath);
  rating->halfFullStarImage = ui::Image::contentsOfFile(halfFullPath);
  rating->fullStarImage = ui::Image::contentsOfFile(fullPath);
}

}  // namespace vantorium::gtk
