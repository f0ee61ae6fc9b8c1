#pragma once

#include <gdkmm.h>

#include "hosts/gtk/image_loader.hpp"

namespace vantorium::gtk {

/// A decoded picture as widgets show it: as large, in points, as the picture has pixels, and drawn from the
/// smallest of its levels that is sharp. `scale` is how many device pixels a point has where it is shown.
/// Main thread only.
Glib::RefPtr<Gdk::Paintable> makePaintable(ImageLoader::Picture picture, int scale);

}  // namespace vantorium::gtk
