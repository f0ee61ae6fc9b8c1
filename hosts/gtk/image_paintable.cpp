#include "hosts/gtk/image_paintable.hpp"

#include <gtk/gtk.h>

#include <utility>

namespace vantorium::gtk {

namespace {

class ImagePaintable final : public Gdk::Paintable, public Glib::Object {
 public:
  ImagePaintable(ImageLoader::Picture picture, int scale)
      : Glib::ObjectBase("VantoriumImage"), picture_(std::move(picture)), scale_(scale) {}

 protected:
  void snapshot_vfunc(const Glib::RefPtr<Gdk::Snapshot>& snapshot, double width, double height) override {
    auto sharp = picture_->levels.front();
    for (const auto& level : picture_->levels) {
      if (level->get_width() >= width * scale_ && level->get_height() >= height * scale_) sharp = level;
    }
    graphene_rect_t area;
    graphene_rect_init(&area, 0, 0, static_cast<float>(width), static_cast<float>(height));
    gtk_snapshot_append_texture(GTK_SNAPSHOT(snapshot->gobj()), sharp->gobj(), &area);
  }

  Gdk::Paintable::Flags get_flags_vfunc() const override {
    return Gdk::Paintable::Flags::STATIC_SIZE | Gdk::Paintable::Flags::STATIC_CONTENTS;
  }
  int get_intrinsic_width_vfunc() const override { return picture_->width(); }
  int get_intrinsic_height_vfunc() const override { return picture_->height(); }
  double get_intrinsic_aspect_ratio_vfunc() const override {
    return static_cast<double>(picture_->width()) / picture_->height();
  }

 private:
  const ImageLoader::Picture picture_;
  const int scale_;
};

}  // namespace

Glib::RefPtr<Gdk::Paintable> makePaintable(ImageLoader::Picture picture, int scale) {
  return Glib::make_refptr_for_instance<ImagePaintable>(new ImagePaintable(std::move(picture), scale));
}

}  // namespace vantorium::gtk
