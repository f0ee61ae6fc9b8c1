#pragma once

#include <gtkmm.h>

#include <memory>

namespace vantorium::gtk {

/// A view of this host that brings a widget of its own, which the mirror shows where the view lies.
class NativeWidget {
 public:
  virtual ~NativeWidget() = default;
  virtual std::shared_ptr<Gtk::Widget> widget() = 0;
};

/// A player of this host: what a player layer shows.
class NativePicture {
 public:
  virtual ~NativePicture() = default;
  virtual Glib::RefPtr<Gdk::Paintable> paintable() = 0;
};

}  // namespace vantorium::gtk
