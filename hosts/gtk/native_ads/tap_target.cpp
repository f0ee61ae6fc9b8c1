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
  offer(false);
}

// A link that leads nowhere is no control, and says nothing of itself.
void TapTarget::offer(bool isLink) {
  if (isLink == isOffered_) return;
  isOffered_ = isLink;
  widget_->set_focusable(isLink);
  widget_->set_cursor(isLink ? "pointer" : "");
  if (isLink) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget_->gobj()), GTK_ACCESSIBLE_PROPERTY_ROLE_DESCRIPTION,
                                   "link", -1);
  } else {
    gtk_accessible_reset_property(GTK_ACCESSIBLE(widget_->gobj()), GTK_ACCESSIBLE_PROPERTY_ROLE_DESCRIPTION);
  }
}

void TapTarget::sync() {
  const auto view = view_.lock();
  if (isLeftAlone_ || !widget_ || !view || !view->recognizesTaps()) return;
  offer(!view->accessibilityLabel().empty());
  if (!clicks_) addControllers();
}

void TapTarget::addControllers() {
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
}

}  // namespace vantorium::gtk
