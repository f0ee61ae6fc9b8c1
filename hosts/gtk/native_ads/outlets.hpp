#pragma once

#include <gtkmm.h>

#include <memory>
#include <string>

#include "hosts/gtk/image_loader.hpp"
#include "platform/ui/view.hpp"

namespace vantorium::gtk {

/// Keeps a widget of the application showing what a view of the SDK's tree says, and brings the user's taps
/// back to the view. The widget may go before this object does. Main thread only.
class Outlet {
 public:
  virtual ~Outlet() = default;
  /// Brings the widget up to date with the view. Nothing happens once the widget is gone.
  virtual void sync() = 0;
  /// The widget; null once it is gone.
  virtual Gtk::Widget* widget() = 0;
};

/// The class of widget that the outlet of this name takes, as applications call it.
const char* widgetClassFor(const std::string& outlet);
/// Whether the widget is of that class.
bool fitsOutlet(const std::string& outlet, Gtk::Widget& widget);

/// For a widget that fits the outlet that the view is for.
std::unique_ptr<Outlet> makeOutlet(Gtk::Widget& widget, const std::shared_ptr<ui::View>& view,
                                   const std::shared_ptr<ImageLoader>& images);

}  // namespace vantorium::gtk
