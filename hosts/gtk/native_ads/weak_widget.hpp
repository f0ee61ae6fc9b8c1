#pragma once

#include <gtkmm.h>

namespace vantorium::gtk {

/// Points to a widget for as long as it is there. Main thread only.
template <typename Widget>
class WeakWidget final : public sigc::notifiable {
 public:
  explicit WeakWidget(Widget& widget) : widget_(&widget) {
    widget.add_destroy_notify_callback(
        this, [](sigc::notifiable* self) { static_cast<WeakWidget*>(self)->widget_ = nullptr; });
  }
  ~WeakWidget() {
    if (widget_ != nullptr) widget_->remove_destroy_notify_callback(this);
  }
  WeakWidget(const WeakWidget&) = delete;
  WeakWidget& operator=(const WeakWidget&) = delete;

  Widget* get() const { return widget_; }
  explicit operator bool() const { return widget_ != nullptr; }
  Widget* operator->() const { return widget_; }
  Widget& operator*() const { return *widget_; }

 private:
  Widget* widget_;
};

}  // namespace vantorium::gtk
