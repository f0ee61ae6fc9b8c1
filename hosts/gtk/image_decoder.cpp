#include "hosts/gtk/image_decoder.hpp"

namespace vantorium::gtk {

namespace {

struct LoaderClose {
  void operator()(GdkPixbufLoader* loader) const {
    gdk_pixbuf_loader_close(loader, nullptr);  // a loader must be closed, and may be twice
    g_object_unref(loader);
  }
};

// The decoders show what there is of a picture that was cut off, grey or nothing where no more came. A whole
// one has the mark of its end somewhere after its pixels began.
bool isCutShort(std::string_view bytes) {
  constexpr std::string_view pixelsOfJPEG = "\xff\xda", endOfJPEG = "\xff\xd9";
  if (bytes.starts_with("\xff\xd8")) {
    const auto end = bytes.rfind(endOfJPEG);
    return end == std::string_view::npos || end < bytes.rfind(pixelsOfJPEG) + 1;
  }
  return bytes.starts_with("\x89PNG") && bytes.rfind("IEND") == std::string_view::npos;
}

using Fit = std::function<PixelSize(PixelSize)>;

// A size of nothing makes the decoders give up before they allocate.
void sizePrepared(GdkPixbufLoader* loader, int width, int height, gpointer data) {
  const PixelSize wanted = (*static_cast<const Fit*>(data))({width, height});
  gdk_pixbuf_loader_set_size(loader, static_cast<int>(wanted.width), static_cast<int>(wanted.height));
}

}  // namespace

Pixbuf decodeImage(std::string_view bytes, const Fit& fit) {
  if (isCutShort(bytes)) return nullptr;
  const std::unique_ptr<GdkPixbufLoader, LoaderClose> loader(gdk_pixbuf_loader_new());
  g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(sizePrepared), const_cast<Fit*>(&fit));
  const auto* const first = reinterpret_cast<const guchar*>(bytes.data());
  const bool isWhole = gdk_pixbuf_loader_write(loader.get(), first, bytes.size(), nullptr) &&
                       gdk_pixbuf_loader_close(loader.get(), nullptr);
  GdkPixbuf* const pixbuf = isWhole ? gdk_pixbuf_loader_get_pixbuf(loader.get()) : nullptr;
  return Pixbuf(pixbuf != nullptr ? gdk_pixbuf_apply_embedded_orientation(pixbuf) : nullptr);
}

}  // namespace vantorium::gtk
