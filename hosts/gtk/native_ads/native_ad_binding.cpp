#include "hosts/gtk/native_ads/native_ad_binding.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

#include "hosts/gtk/native_ads/visibility.hpp"

namespace vantorium::gtk {

/// Where the view stands while it is in no window: what changes is mirrored all the same, for a widget that
/// is not seen yet has a size.
class NativeAdBinding::Shelf final : public ui::View {
 public:
  explicit Shelf(IdleCall& commit) : commit_(commit) {}

 protected:
  void treeDidChange() override { commit_.schedule(); }

 private:
  IdleCall& commit_;
};

NativeAdBinding::NativeAdBinding(Gtk::Widget& widget, DesktopHost& host)
    : widget_(widget),
      host_(host),
      window_(std::make_shared<ui::Window>(static_cast<ui::Renderer&>(*this), ui::Rect{})),
      shelf_(std::make_shared<Shelf>(commit_)),
      view_(std::make_shared<VantoriumNativeAdView>(host)) {
  shelf_->addSubview(view_);
  view_->didFill = [this] { commit(); };
  connections_.push_back(widget.signal_map().connect([this] { watch(); }));
  connections_.push_back(widget.signal_unmap().connect([this] {
    watching_.reset();
    updateVisibility();
  }));
  if (widget.get_mapped()) watch();
}

NativeAdBinding::~NativeAdBinding() {
  for (auto& connection : connections_) connection.disconnect();
  watching_.reset();
  // Others may hold it, and both refer to this object.
  view_->removeFromSuperview();
  view_->didFill = nullptr;
}

std::optional<Error> NativeAdBinding::connect(const std::string& outlet, Gtk::Widget& widget) {
  const auto& names = VantoriumNativeAdView::outletNames();
  if (std::ranges::find(names, outlet) == names.end()) {
    return VantoriumError::internalError(fmt::format(
        "A native ad view has no outlet \"{}\". Connect one of: {}.", outlet, fmt::join(names, ", ")));
  }
  if (const auto flaw = flawOf(outlet, widget)) return VantoriumError::internalError(flaw);
  if (const auto known = outlets_.find(outlet); known != outlets_.end()) {
    known->second.view->removeFromSuperview();
    outlets_.erase(known);
  }
  const auto view = view_->makeOutlet(outlet);
  outlets_[outlet] = {view, makeOutlet(widget, view, host_.application().images())};
  return std::nullopt;
}

/// Why the widget cannot be connected; none when it can.
std::optional<std::string> NativeAdBinding::flawOf(const std::string& outlet, Gtk::Widget& widget) const {
  if (!fitsOutlet(outlet, widget)) {
    std::string_view name = G_OBJECT_TYPE_NAME(widget.gobj());
    constexpr std::string_view binding = "gtkmm__";  // what the C++ binding calls its own
    if (name.starts_with(binding)) name.remove_prefix(binding.size());
    return fmt::format("The outlet \"{}\" takes a {}, not a {}.", outlet, widgetClassFor(outlet), name);
  }
  for (const auto& [other, connected] : outlets_) {
    if (connected.outlet->widget() != &widget) continue;
    if (other == outlet) return std::nullopt;
    return fmt::format("The widget for the outlet \"{}\" is that of \"{}\" already. Connect another one.",
                       outlet, other);
  }
  if (dynamic_cast<Gtk::Box*>(&widget) != nullptr && widget.get_first_child() != nullptr) {
    return fmt::format("The outlet \"{}\" takes an empty Gtk::Box, and this one has a child.", outlet);
  }
  return std::nullopt;
}

void NativeAdBinding::dropOutletsThatAreGone() {
  std::erase_if(outlets_, [](const auto& each) {
    if (each.second.outlet->widget() != nullptr) return false;
    each.second.view->removeFromSuperview();
    return true;
  });
}

void NativeAdBinding::commit() {
  window_->didCommit();  // what changes from here on, in handlers of the application, is for the next time
  dropOutletsThatAreGone();
  if (!view_->nativeAd()) return;  // until then the widgets are as the application made them
  // Copies: such a handler may connect other outlets, or end this object.
  const auto outlets = outlets_;
  const std::weak_ptr<bool> alive = alive_;
  for (const auto& [name, connected] : outlets) {
    if (alive.expired()) return;
    connected.outlet->sync();
  }
}

// The toolkit tells when a widget is mapped, but not when it is scrolled out of sight.
void NativeAdBinding::watch() {
  watching_ = host_.application().ticker().subscribe([this] { updateVisibility(); });
  look_.schedule();
}

void NativeAdBinding::updateVisibility() {
  const auto& application = host_.application();
  const ui::Rect frame{0, 0, static_cast<double>(widget_.get_width()),
                       static_cast<double>(widget_.get_height())};
  window_->setFrame(frame);
  view_->setFrame(frame);
  if (const auto media = outlets_.find("mediaView"); media != outlets_.end()) {
    Gtk::Widget* const box = media->second.outlet->widget();
    media->second.view->setHidden(box == nullptr || !isSeen(*box, application));
  }
  const auto& place = isSeen(widget_, application) ? std::static_pointer_cast<ui::View>(window_) : shelf_;
  if (view_->superview() != place.get()) place->addSubview(view_);
}

}  // namespace vantorium::gtk
