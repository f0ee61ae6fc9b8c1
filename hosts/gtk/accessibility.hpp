#pragma once

#include <gtkmm.h>

#include <string>

namespace vantorium::gtk {

/// What assistive technology says of the widget; empty for what the toolkit says by itself.
void setAccessibleLabel(Gtk::Widget& widget, const std::string& label);

/// The same for a picture: one without a label is decoration, and not spoken of.
void describePicture(Gtk::Widget& picture, const std::string& label);

}  // namespace vantorium::gtk
