#pragma once

#include <gtkmm.h>

namespace vantorium::gtk {

class DesktopApplication;

/// Whether some part of the widget can be seen, as far as the toolkit can tell: not when it, or what it is
/// in, is not mapped, scrolled out of what shows it, transparent, minimised or under a full-screen ad. Main
/// thread only.
bool isSeen(Gtk::Widget& widget, const DesktopApplication& application);

}  // namespace vantorium::gtk
