#include "hosts/gtk/image_loader.hpp"

#include <gio/gio.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include <vantorium/error.hpp>

#include "hosts/gtk/image_decoder.hpp"
#include "platform/foundation/files.hpp"
#include "platform/ui/interface_file.hpp"

namespace vantorium::gtk {

namespace {

constexpr std::int64_t mostPixels = 64'000'000;  // that a picture may claim to have
constexpr double longestSide = 4096;             // pixels that are kept of it
constexpr int shortestLevel = 32;                // pixels; nothing is shown smaller

PixelSize scaled(PixelSize size, double factor) {
  return {std::max<std::int64_t>(1, std::llround(static_cast<double>(size.width) * factor)),
          std::max<std::int64_t>(1, std::llround(static_cast<double>(size.height) * factor))};
}

PixelSize fitRequest(const ImageLoader::Request& request, PixelSize size) {
  if (size.width <= 0 || size.height <= 0) return {};
  double factor = std::min(request.width / static_cast<double>(size.width),
                           request.height / static_cast<double>(size.height));
  if (!request.mayEnlarge) factor = std::min(factor, static_cast<double>(request.scale));
  return scaled(size, factor);
}

PixelSize fitPicture(PixelSize size) {
  if (size.width <= 0 || size.height <= 0 || size.width * size.height > mostPixels) return {};
  return scaled(size, std::min(1.0, longestSide / static_cast<double>(std::max(size.width, size.height))));
}

Glib::RefPtr<Gdk::Texture> texture(const Pixbuf& pixbuf) {
  return pixbuf ? Glib::wrap(gdk_texture_new_for_pixbuf(pixbuf.get())) : Glib::RefPtr<Gdk::Texture>();
}

ImageLoader::Picture decodePicture(const ui::Image& image) {
  std::optional<Error> ignored;
  std::optional<std::string> file;
  if (image.data() == nullptr) file = readFile(image.name(), ignored);
  if (image.data() == nullptr && !file) return nullptr;
  const std::string_view bytes = file ? std::string_view(*file) : image.data()->bytes();
  if (bytes.size() > ui::Image::largestFile) return nullptr;

  const auto picture = std::make_shared<DecodedImage>();
  Pixbuf pixbuf = decodeImage(bytes, fitPicture);
  while (pixbuf) {
    picture->levels.push_back(texture(pixbuf));
    const int width = gdk_pixbuf_get_width(pixbuf.get()) / 2,
              height = gdk_pixbuf_get_height(pixbuf.get()) / 2;
    const bool isSmall = std::min(width, height) < shortestLevel;
    pixbuf.reset(isSmall ? nullptr
                         : gdk_pixbuf_scale_simple(pixbuf.get(), width, height, GDK_INTERP_BILINEAR));
  }
  return picture->levels.empty() ? nullptr : picture;
}

/// What becomes of one image; kept with it.
struct Decoding {
  bool isDone = false;
  ImageLoader::Picture picture;
  std::vector<ImageLoader::Completion> waiting;
};

/// What a worker decodes, on its way there and back to the main thread, where it ends.
struct Job {
  std::weak_ptr<ImageLoader> loader;
  std::shared_ptr<const ui::Image> image;
  ImageLoader::Picture picture;
};

gboolean deliver(gpointer data) {
  auto& job = *static_cast<Job*>(data);
  const auto decoding = std::static_pointer_cast<Decoding>(job.image->decoded());
  decoding->isDone = true;
  decoding->picture = std::move(job.picture);
  const auto waiting = std::exchange(decoding->waiting, {});
  if (!job.loader.lock()) return G_SOURCE_REMOVE;
  for (const auto& completion : waiting) completion(decoding->picture);
  return G_SOURCE_REMOVE;
}

}  // namespace

Glib::RefPtr<Gdk::Texture> ImageLoader::bundled(const Request& request) {
  if (request.name.empty() || request.width <= 0 || request.height <= 0) return {};
  auto& image = bundled_[{request.name, request.width, request.height, request.scale, request.mayEnlarge}];
  if (!image) {
    auto bytes = ui::bundleResource(request.name);
    if (bytes.empty()) bytes = ui::bundleResource(request.name + ".svg");
    image = texture(decodeImage(bytes, [&](PixelSize size) { return fitRequest(request, size); }));
  }
  return image;
}

void ImageLoader::load(const std::shared_ptr<const ui::Image>& image, Completion completion) {
  if (auto known = std::static_pointer_cast<Decoding>(image->decoded())) {
    if (known->isDone) return completion(known->picture);
    known->waiting.push_back(std::move(completion));
    return;
  }
  const auto decoding = std::make_shared<Decoding>();
  decoding->waiting.push_back(std::move(completion));
  image->setDecoded(decoding);
  auto* const job = new Job{weak_from_this(), image, nullptr};
  queue_->async([job] {
    job->picture = decodePicture(*job->image);
    g_idle_add_full(G_PRIORITY_DEFAULT, deliver, job, [](gpointer data) { delete static_cast<Job*>(data); });
  });
}

}  // namespace vantorium::gtk
