#pragma once

#include <gtkmm.h>

#include <string>

namespace vantorium::gtk {

/// For tests and demonstrations: writes what a mapped window shows, pages and video included, as a PNG. False
/// when there is nothing to see or the file cannot be written. Main thread only.
bool savePNG(Gtk::Window& window, const std::string& path);

}  // namespace vantorium::gtk
