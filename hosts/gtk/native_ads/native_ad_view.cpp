#include <vantorium/gtk_native_ads.hpp>

#include "hosts/gtk/native_ads/native_ad_binding.hpp"
#include "platform/ui/image.hpp"

namespace vantorium::gtk {

namespace {

/// Null, with a word on the console, for a host of another kind.
std::unique_ptr<NativeAdBinding> bind(Gtk::Widget& widget, Host& host) {
  if (auto* const desktop = dynamic_cast<DesktopHost*>(&host))
    return std::make_unique<NativeAdBinding>(widget, *desktop);
  g_critical("vantorium: a NativeAdView needs the host that vantorium::gtk::makeHost gives.");
  return nullptr;
}

template <typename Class>
std::shared_ptr<Class> outletOf(const std::unique_ptr<NativeAdBinding>& binding,
                                std::weak_ptr<Class> VantoriumNativeAdView::Outlets::*outlet) {
  return binding ? (binding->view()->outlets.*outlet).lock() : nullptr;
}

}  // namespace

NativeAdView::NativeAdView(Host& host, Gtk::Orientation orientation, int spacing)
    : Gtk::Box(orientation, spacing), binding_(bind(*this, host)) {}

NativeAdView::NativeAdView(GtkBox* box, const Glib::RefPtr<Gtk::Builder>& builder, Host& host)
    : Gtk::Box(box), binding_(bind(*this, host)) {
  for (const std::string& name : VantoriumNativeAdView::outletNames()) {
    const auto object = builder->get_object(name);
    if (!object) continue;
    const auto widget = std::dynamic_pointer_cast<Gtk::Widget>(object);
    const auto error = widget ? connectOutlet(name, *widget)
                              : VantoriumError::internalError("\"" + name + "\" is no widget.");
    if (error) g_warning("vantorium: %s", error->localizedDescription().c_str());
  }
}

NativeAdView::~NativeAdView() = default;

std::optional<Error> NativeAdView::connectOutlet(const std::string& outlet, Gtk::Widget& widget) {
  if (!binding_) return VantoriumError::internalError("The view was not given a GTK host.");
  return binding_->connect(outlet, widget);
}

std::shared_ptr<VantoriumNativeAdView> NativeAdView::view() const {
  return binding_ ? binding_->view() : nullptr;
}

std::shared_ptr<VantoriumNativeAd> NativeAdView::nativeAd() const {
  return binding_ ? binding_->view()->nativeAd() : nullptr;
}

void NativeAdView::playVideo() {
  if (const auto media = outletOf(binding_, &VantoriumNativeAdView::Outlets::mediaView)) media->play();
}

void NativeAdView::pauseVideo() {
  if (const auto media = outletOf(binding_, &VantoriumNativeAdView::Outlets::mediaView)) media->pause();
}

void NativeAdView::setStarImages(const std::string& emptyPath, const std::string& halfFullPath,
                                 const std::string& fullPath) {
  const auto rating = outletOf(binding_, &VantoriumNativeAdView::Outlets::ratingView);
  if (!rating) return;
  rating->emptyStarImage = ui::Image::contentsOfFile(emptyPath);
  rating->halfFullStarImage = ui::Image::contentsOfFile(halfFullPath);
  rating->fullStarImage = ui::Image::contentsOfFile(fullPath);
}

}  // namespace vantorium::gtk
