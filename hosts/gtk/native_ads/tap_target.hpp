#pragma once

#include <gtkmm.h>

#include <memory>

#include "hosts/gtk/native_ads/weak_widget.hpp"
#include "platform/ui/view.hpp"

namespace vantorium::gtk {

/// Lets a picture of the application act like a link, by pointer and keyboard, once its view wants taps. A
/// picture that had gestures of its own is left to them. Main thread only.
class TapTarget {
 public:
  TapTarget(Gtk::Widget& widget, ui::View& view);
  ~TapTarget();

  void sync();

 private:
  void offer(bool isLink);
  void addControllers();

  WeakWidget<Gtk::Widget> widget_;
  std::weak_ptr<ui::View> view_;
  bool isLeftAlone_ = false;
  bool isOffered_ = false;
  Glib::RefPtr<Gtk::GestureClick> clicks_;
  Glib::RefPtr<Gtk::EventControllerKey> keys_;
};

}  // namespace vantorium::gtk
