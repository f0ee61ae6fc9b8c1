#pragma once

#include <gtkmm.h>

#include <functional>
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
  /// Null while there is nothing to show.
  virtual Glib::RefPtr<Gdk::Paintable> paintable() = 0;
  /// Called when there is another one; not after the observer, held weakly, is gone.
  virtual void observePaintable(std::weak_ptr<std::function<void()>> observer) = 0;
};

}  // namespace vantorium::gtk
