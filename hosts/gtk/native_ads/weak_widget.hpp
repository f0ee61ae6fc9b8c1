#pragma once

#include <gtkmm.h>

namespace vantorium::gtk {

/// Points to a widget for as long as the toolkit has it. Main thread only.
template <typename Widget>
class WeakWidget {
 public:
  explicit WeakWidget(Widget& widget) : widget_(&widget), object_(G_OBJECT(widget.gobj())) {
    g_object_add_weak_pointer(object_, reinterpret_cast<gpointer*>(&object_));
  }
  ~WeakWidget() {
    if (object_ != nullptr) g_object_remove_weak_pointer(object_, reinterpret_cast<gpointer*>(&object_));
  }
  WeakWidget(const WeakWidget&) = delete;
  WeakWidget& operator=(const WeakWidget&) = delete;

  Widget* get() const { return object_ != nullptr ? widget_ : nullptr; }
  explicit operator bool() const { return object_ != nullptr; }
  Widget* operator->() const { return widget_; }
  Widget& operator*() const { return *widget_; }

 private:
  Widget* const widget_;
  GObject* object_;  // null once it is gone
};

}  // namespace vantorium::gtk
