#pragma once

#include <gtkmm.h>

#include "platform/ui/controls.hpp"

namespace vantorium::gtk {

/// Takes the theme's padding, frame and colours off a button of an ad, which brings its own, and gives its
/// feedback the corner radius of the ad's button. Main thread only.
void applyButtonStyle(Gtk::Button& button, double cornerRadius);

/// Text attributes: size in points of this host (device-independent pixels), weight and colour.
Pango::AttrList textAttributes(double fontSize, bool bold, ui::Color color);

}  // namespace vantorium::gtk
