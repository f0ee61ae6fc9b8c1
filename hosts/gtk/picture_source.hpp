#pragma once

#include <gtkmm.h>

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
    if (image == wanted_) return;
    wanted_ = image;
    put_({});
    if (!image) return;
    images_->load(image, [this, image, scale, alive = std::weak_ptr(alive_)](ImageLoader::Picture picture) {
      if (alive.expired() || image != wanted_ || !picture) return;
      put_(makePaintable(std::move(picture), scale));
    });
  }

 private:
  std::shared_ptr<ImageLoader> images_;
  Put put_;
  std::shared_ptr<const ui::Image> wanted_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace vantorium::gtk
