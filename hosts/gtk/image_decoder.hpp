#pragma once

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace vantorium::gtk {

struct PixbufUnref {
  void operator()(GdkPixbuf* pixbuf) const { g_object_unref(pixbuf); }
};
using Pixbuf = std::unique_ptr<GdkPixbuf, PixbufUnref>;

struct PixelSize {
  std::int64_t width = 0, height = 0;
};

/// Decodes a whole image. `fit` is asked, with the size that the image claims to have, at which size it is
/// wanted, before any room is made for it; no size refuses it. Null when it is refused, incomplete or broken.
/// Any thread.
Pixbuf decodeImage(std::string_view bytes, const std::function<PixelSize(PixelSize)>& fit);

}  // namespace vantorium::gtk
