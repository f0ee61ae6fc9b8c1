#include "hosts/gtk/image_loader.hpp"

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

constexpr std::uint64_t brokenRemembered = 1000;  // for so many uses of other pictures
constexpr std::int64_t mostPixels = 64'000'000;   // that a picture may claim to have
constexpr double longestSide = 2048;              // pixels that are kept of it
constexpr int shortestLevel = 32;                 // pixels; nothing is shown smaller
constexpr std::size_t mostKept = 64 << 20;        // bytes of pictures that nobody need be showing

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

std::size_t DecodedImage::bytes() const {
  std::size_t all = 0;
  for (const auto& level : levels) {
    all += std::size_t{4} * static_cast<std::size_t>(level->get_width()) *
           static_cast<std::size_t>(level->get_height());
  }
  return all;
}

void ImageLoader::load(const std::shared_ptr<const ui::Image>& image, Completion completion) {
  Entry& entry = pictures_[image->identity()];
  entry.lastUse = ++uses_;
  if (!entry.kept) entry.kept = entry.shown.lock();
  if (entry.kept || entry.isBroken) {
    const Picture known = entry.kept;
    return completion(known);
  }
  entry.waiting.push_back(std::move(completion));
  if (entry.waiting.size() == 1) decode(image);
}

void ImageLoader::decode(const std::shared_ptr<const ui::Image>& image) {
  queue_->async([weak = weak_from_this(), image] {
    auto deliver = std::make_unique<std::function<void()>>(
        [weak, identity = image->identity(), picture = decodePicture(*image)] {
          if (const auto self = weak.lock()) self->finish(identity, picture);
        });
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
          (*static_cast<std::function<void()>*>(data))();
          return G_SOURCE_REMOVE;
        },
        deliver.release(), [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
  });
}

void ImageLoader::finish(const std::string& identity, const Picture& picture) {
  Entry& entry = pictures_[identity];
  entry.isBroken = !picture;
  entry.kept = picture;
  entry.shown = picture;
  const auto waiting = std::exchange(entry.waiting, {});
  makeRoom();
  for (const auto& completion : waiting) completion(picture);
}

/// Lets go of the pictures that were used least lately.
void ImageLoader::makeRoom() {
  std::vector<std::pair<std::uint64_t, std::string>> byUse;
  std::size_t bytes = 0;
  for (const auto& [identity, entry] : pictures_) {
    if (!entry.kept) continue;
    bytes += entry.kept->bytes();
    byUse.emplace_back(entry.lastUse, identity);
  }
  std::sort(byUse.begin(), byUse.end());
  for (auto oldest = byUse.begin(); bytes > mostKept && oldest != byUse.end(); ++oldest) {
    Entry& entry = pictures_[oldest->second];
    bytes -= entry.kept->bytes();
    entry.kept.reset();
  }
  std::erase_if(pictures_, [this](const auto& each) {
    const Entry& entry = each.second;
    if (entry.isBroken) return uses_ - entry.lastUse > brokenRemembered;
    return entry.waiting.empty() && !entry.kept && entry.shown.expired();
  });
}

}  // namespace vantorium::gtk
