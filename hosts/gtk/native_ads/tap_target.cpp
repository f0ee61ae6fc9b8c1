#include "hosts/gtk/native_ads/tap_target.hpp"

namespace vantorium::gtk {

namespace {

bool hasGestures(Gtk::Widget& widget) {
  const auto controllers = widget.observe_controllers();
  for (guint index = 0; index < controllers->get_n_items(); ++index) {
    if (std::dynamic_pointer_cast<Gtk::Gesture>(controllers->get_object(index))) return true;
  }
  return false;
}

bool activates(guint key) {
  return key == GDK_KEY_Return || key == GDK_KEY_KP_Enter || key == GDK_KEY_ISO_Enter || key == GDK_KEY_space;
}

}  // namespace

TapTarget::TapTarget(Gtk::Widget& widget, ui::View& view)
    : widget_(widget), view_(view.weak_from_this()), isLeftAlone_(hasGestures(widget)) {
  if (isLeftAlone_) view.addTapRecognizer([] {});
}

TapTarget::~TapTarget() {
  if (!widget_ || !clicks_) return;
  widget_->remove_controller(clicks_);
  widget_->remove_controller(keys_);
}

void TapTarget::sync() {
  const auto view = view_.lock();
  if (isLeftAlone_ || clicks_ || !widget_ || !view || !view->recognizesTaps()) return;
  const auto tap = [this] {
    if (const auto tapped = view_.lock()) tapped->handleTap();
  };
  clicks_ = Gtk::GestureClick::create();
  clicks_->signal_released().connect([this, tap](int, double x, double y) {
    if (!widget_->contains(x, y)) return;
    clicks_->set_state(Gtk::EventSequenceState::CLAIMED);
    tap();
  });
  widget_->add_controller(clicks_);
  keys_ = Gtk::EventControllerKey::create();
  keys_->signal_key_pressed().connect(
      [tap](guint key, guint, Gdk::ModifierType) {
        if (!activates(key)) return false;
        tap();
        return true;
      },
      false);
  widget_->add_controller(keys_);
  widget_->set_focusable();
  widget_->set_cursor("pointer");
}

}  // namespace vantorium::gtk
