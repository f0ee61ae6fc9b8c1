#include "hosts/gtk/image_loader.hpp"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gio/gio.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/foundation/worker_pool.hpp"
#include "platform/ui/interface_file.hpp"

namespace vantorium::gtk {

namespace {

constexpr int largestSide = 8192;          // pixels an image file may claim
constexpr goffset largestFile = 64 << 20;  // bytes of an image file

struct PixbufUnref {
  void operator()(GdkPixbuf* pixbuf) const { g_object_unref(pixbuf); }
};
using Pixbuf = std::unique_ptr<GdkPixbuf, PixbufUnref>;

void fit(GdkPixbufLoader* loader, int width, int height, gpointer data) {
  const auto& request = *static_cast<const ImageLoader::Request*>(data);
  if (width <= 0 || height <= 0) return;
  double factor =
      std::min(static_cast<double>(request.width) / width, static_cast<double>(request.height) / height);
  if (!request.mayEnlarge) factor = std::min(factor, static_cast<double>(request.scale));
  gdk_pixbuf_loader_set_size(loader, std::max(1, static_cast<int>(std::lround(width * factor))),
                             std::max(1, static_cast<int>(std::lround(height * factor))));
}

Pixbuf decode(std::string_view bytes, const ImageLoader::Request& request) {
  GdkPixbufLoader* const loader = gdk_pixbuf_loader_new();
  g_signal_connect(loader, "size-prepared", G_CALLBACK(fit), const_cast<ImageLoader::Request*>(&request));
  const bool written =
      gdk_pixbuf_loader_write(loader, reinterpret_cast<const guchar*>(bytes.data()), bytes.size(), nullptr);
  const bool closed = gdk_pixbuf_loader_close(loader, nullptr);
  GdkPixbuf* const pixbuf = written && closed ? gdk_pixbuf_loader_get_pixbuf(loader) : nullptr;
  if (pixbuf != nullptr) g_object_ref(pixbuf);
  g_object_unref(loader);
  return Pixbuf(pixbuf);
}

Pixbuf decodeFile(const ImageLoader::Request& request) {
  int width = 0, height = 0;
  const bool known = gdk_pixbuf_get_file_info(request.name.c_str(), &width, &height) != nullptr;
  if (!known || width > largestSide || height > largestSide) return nullptr;
  GMappedFile* const file = g_mapped_file_new(request.name.c_str(), FALSE, nullptr);
  if (file == nullptr) return nullptr;
  const std::string_view bytes(g_mapped_file_get_contents(file), g_mapped_file_get_length(file));
  Pixbuf pixbuf = bytes.size() > largestFile ? nullptr : decode(bytes, request);
  g_mapped_file_unref(file);
  return pixbuf;
}

Glib::RefPtr<Gdk::Texture> texture(const Pixbuf& pixbuf) {
  return pixbuf ? Glib::wrap(gdk_texture_new_for_pixbuf(pixbuf.get())) : Glib::RefPtr<Gdk::Texture>();
}

// What a worker decoded, on its way back to the main thread.
struct Decoded {
  std::weak_ptr<ImageLoader> loader;
  ImageLoader::Completion completion;
  Pixbuf pixbuf;
};

gboolean deliver(gpointer data) {
  const auto& decoded = *static_cast<Decoded*>(data);
  if (decoded.loader.lock()) decoded.completion(texture(decoded.pixbuf));
  return G_SOURCE_REMOVE;
}

}  // namespace

Glib::RefPtr<Gdk::Texture> ImageLoader::bundled(const Request& request) {
  auto& image = bundled_[{request.name, request.width, request.height, request.scale, request.mayEnlarge}];
  if (!image) image = texture(decode(ui::bundleResource(request.name), request));
  return image;
}

void ImageLoader::load(const Request& request, Completion completion) {
  if (request.name.empty() || request.width <= 0 || request.height <= 0) return completion({});
  if (request.name.front() != '/') return completion(bundled(request));
  auto* const decoded = new Decoded{weak_from_this(), std::move(completion), nullptr};
  workers::async([request, decoded] {
    decoded->pixbuf = decodeFile(request);
    g_idle_add_full(G_PRIORITY_DEFAULT, deliver, decoded,
                    [](gpointer data) { delete static_cast<Decoded*>(data); });
  });
}

}  // namespace vantorium::gtk
