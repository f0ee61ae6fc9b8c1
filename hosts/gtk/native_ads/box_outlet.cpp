#include "hosts/gtk/native_ads/box_outlet.hpp"

#include <algorithm>

#include "hosts/gtk/accessibility.hpp"
#include "hosts/gtk/idle_call.hpp"
#include "hosts/gtk/native_ads/weak_widget.hpp"
#include "hosts/gtk/view_node.hpp"
#include "hosts/gtk/view_widget.hpp"
#include "native_ads/rating_view.hpp"

namespace vantorium::gtk {

namespace {

constexpr int starsWidth = 100, starsHeight = 20;  // points
constexpr int videoWidth = 16, videoHeight = 9,
              videoScale = 10;  // its shape, and how many points wide at least

/// The space of a view in a box: a video is as tall as its width wants, stars are as large as text; a height
/// that the application gave to the box holds in any case.
class Surface final : public ViewWidget {
 public:
  explicit Surface(bool isVideo) : Glib::ObjectBase("VantoriumNativeSurface"), isVideo_(isVideo) {
    set_expand();
    // Given before anybody can have asked for it: a row of stars is one picture to those who do not see it.
    if (!isVideo) g_object_set(gobj(), "accessible-role", GTK_ACCESSIBLE_ROLE_IMG, nullptr);
  }

  std::function<void()> onResize;

 protected:
  Gtk::SizeRequestMode get_request_mode_vfunc() const override {
    return isVideo_ ? Gtk::SizeRequestMode::HEIGHT_FOR_WIDTH : Gtk::SizeRequestMode::CONSTANT_SIZE;
  }

  void measure_vfunc(Gtk::Orientation orientation, int forSize, int& minimum, int& natural,
                     int& minimumBaseline, int& naturalBaseline) const override {
    minimumBaseline = naturalBaseline = -1;
    int givenWidth = -1, givenHeight = -1;
    if (const auto* const box = get_parent()) box->get_size_request(givenWidth, givenHeight);
    if (orientation == Gtk::Orientation::HORIZONTAL) {
      natural = givenWidth >= 0 ? givenWidth : isVideo_ ? videoWidth * videoScale : starsWidth;
      minimum = isVideo_ ? std::min(natural, 1) : natural;
    } else if (isVideo_) {
      const int width = forSize >= 0 ? forSize : videoWidth * videoScale;
      minimum = natural = givenHeight >= 0 ? givenHeight : width * videoHeight / videoWidth;
    } else {
      minimum = natural = givenHeight >= 0 ? givenHeight : starsHeight;
    }
  }

  void size_allocate_vfunc(int width, int height, int baseline) override {
    ViewWidget::size_allocate_vfunc(width, height, baseline);
    if (width == width_ && height == height_) return;
    width_ = width;
    height_ = height;
    onResize();
  }

 private:
  const bool isVideo_;
  int width_ = 0, height_ = 0;
};

class BoxOutlet final : public Outlet {
 public:
  BoxOutlet(Gtk::Box& box, const std::shared_ptr<ui::View>& view, const std::shared_ptr<ImageLoader>& images)
      : box_(box),
        view_(view),
        node_(*view, images),
        surface_(std::dynamic_pointer_cast<VantoriumRatingView>(view) == nullptr) {
    surface_.onResize = [this] { resize_.schedule(); };  // layout is under way
    // The view fills the box; how large that is stays the application's decision.
    if (!box.get_hexpand_set()) box.set_hexpand(false);
    if (!box.get_vexpand_set()) box.set_vexpand(false);
    box.append(surface_);
  }
  ~BoxOutlet() override {
    if (box_ && surface_.get_parent() == box_.get()) box_->remove(surface_);
  }

  Gtk::Widget* widget() override { return box_.get(); }

  void sync() override {
    const ui::Size size{static_cast<double>(surface_.get_width()),
                        static_cast<double>(surface_.get_height())};
    view_->setFrame({0, 0, size.width, size.height});
    view_->layoutIfNeeded();
    node_.sync();
    surface_.place(node_.widget(), Placement::filling(size));
    setAccessibleLabel(surface_, view_->accessibilityLabel());
  }

 private:
  WeakWidget<Gtk::Box> box_;
  std::shared_ptr<ui::View> view_;
  ViewNode node_;
  Surface surface_;  // goes before the widgets that are in it
  IdleCall resize_{[this] { sync(); }};
};

}  // namespace

std::unique_ptr<Outlet> makeBoxOutlet(Gtk::Box& box, const std::shared_ptr<ui::View>& view,
                                      const std::shared_ptr<ImageLoader>& images) {
  return std::make_unique<BoxOutlet>(box, view, images);
}

}  // namespace vantorium::gtk
