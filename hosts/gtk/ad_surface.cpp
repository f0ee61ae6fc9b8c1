#include "hosts/gtk/ad_surface.hpp"

#include <cmath>
#include <memory>

namespace vantorium::gtk {

namespace {

constexpr double edgeWidth = 24, backDistance = 64;  // points

}  // namespace

AdSurface::AdSurface() : Glib::ObjectBase("VantoriumAdSurface") {
  set_overflow(Gtk::Overflow::HIDDEN);
  setOpen(false);
  keepFocusInside();
  watchEdges();
}

void AdSurface::setOpen(bool open) {
  set_can_target(open);
  set_can_focus(open);
}

void AdSurface::size_allocate_vfunc(int width, int height, int baseline) {
  ViewWidget::size_allocate_vfunc(width, height, baseline);
  if (width == width_ && height == height_) return;
  width_ = width;
  height_ = height;
  if (onResize) onResize();
}

// After the last widget of the ad comes its first again, not the application's.
void AdSurface::keepFocusInside() {
  const auto keys = Gtk::EventControllerKey::create();
  keys->signal_key_pressed().connect(
      [this](guint key, guint, Gdk::ModifierType) {
        if (key != GDK_KEY_Tab && key != GDK_KEY_ISO_Left_Tab) return false;
        const auto direction = key == GDK_KEY_Tab ? GTK_DIR_TAB_FORWARD : GTK_DIR_TAB_BACKWARD;
        if (gtk_widget_child_focus(GTK_WIDGET(gobj()), direction)) return true;
        gtk_widget_set_focus_child(GTK_WIDGET(gobj()), nullptr);
        gtk_widget_child_focus(GTK_WIDGET(gobj()), direction);
        return true;
      },
      false);
  add_controller(keys);
}

void AdSurface::watchEdges() {
  const auto drag = Gtk::GestureDrag::create();
  drag->set_touch_only(true);
  drag->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
  drag->signal_drag_update().connect([this, gesture = drag.get()](double x, double y) {
    double startX = 0, startY = 0;
    if (!gesture->get_start_point(startX, startY)) return;
    const bool fromLeft = startX <= edgeWidth, fromRight = startX >= get_width() - edgeWidth;
    const double inwards = fromLeft ? x : fromRight ? -x : 0;
    if (inwards < backDistance || std::abs(y) * 2 > inwards) return;
    gesture->set_state(Gtk::EventSequenceState::CLAIMED);
    gesture->reset();
    if (onBackSwipe) onBackSwipe();
  });
  add_controller(drag);
}

}  // namespace vantorium::gtk
