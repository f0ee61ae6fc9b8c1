#pragma once

#include <gtkmm.h>

#include <functional>
#include <memory>
#include <utility>

#include "hosts/gtk/image_loader.hpp"
#include "hosts/gtk/image_paintable.hpp"
#include "platform/ui/image.hpp"

namespace vantorium::gtk {

/// Keeps a widget showing the picture that is wanted: nothing until it is decoded, and nothing if it cannot
/// be. `put` is called with what is to be shown. Main thread only.
class PictureSource {
 public:
  using Put = std::function<void(const Glib::RefPtr<Gdk::Paintable>& picture)>;
  PictureSource(std::shared_ptr<ImageLoader> images, Put put)
      : images_(std::move(images)), put_(std::move(put)) {}

  /// Shows the image, or nothing for null, at so many device pixels per point.
  void show(const std::shared_ptr<const ui::Image>& image, int scale) {
    if (image == wanted_) return rescale(scale);
    wanted_ = image;
    scale_ = scale;
    picture_.reset();
    put_({});
    if (!image) return;
    images_->load(image, [this, weak = std::weak_ptr(image),
                          alive = std::weak_ptr(alive_)](ImageLoader::Picture picture) {
      if (alive.expired() || weak.lock() != wanted_ || !picture) return;
      picture_ = std::move(picture);
      put_(makePaintable(picture_, scale_));
    });
  }

  /// A point has so many device pixels from now on.
  void rescale(int scale) {
    if (std::exchange(scale_, scale) != scale && picture_) put_(makePaintable(picture_, scale));
  }

 private:
  std::shared_ptr<ImageLoader> images_;
  Put put_;
  std::shared_ptr<const ui::Image> wanted_;
  ImageLoader::Picture picture_;
  int scale_ = 1;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace vantorium::gtk
