#include "hosts/gtk/content.hpp"
#include "hosts/gtk/native.hpp"
#include "hosts/gtk/shape_widget.hpp"
#include "platform/av/media_player.hpp"
#include "platform/ui/layer.hpp"

namespace vantorium::gtk {

namespace {

class ShapeContent final : public LayerContent {
 public:
  Gtk::Widget& widget() override { return shape_; }
  Placement placement(const ui::View& view, const ui::Layer&) const override {
    return Placement::filling(view.bounds().size());
  }
  void sync(ui::Layer& layer) override { shape_.setShape(static_cast<const ui::ShapeLayer&>(layer)); }

 private:
  ShapeWidget shape_;
};

class PlayerContent final : public LayerContent {
 public:
  PlayerContent() {
    picture_.set_can_target(false);
    picture_.set_overflow(Gtk::Overflow::HIDDEN);
  }

  Gtk::Widget& widget() override { return picture_; }
  Placement placement(const ui::View&, const ui::Layer& layer) const override {
    return {layer.frame().size(), layer.frame().center(), {}};
  }

  void sync(ui::Layer& layer) override {
    const auto& source = static_cast<const ui::PlayerLayer&>(layer);
    const bool fills = source.videoGravity() == ui::VideoGravity::resizeAspectFill;
    picture_.set_content_fit(fills ? Gtk::ContentFit::COVER : Gtk::ContentFit::CONTAIN);
    player_ = source.player();
    update();
    if (auto* const native = dynamic_cast<NativePicture*>(source.player().get())) {
      native->observePaintable(updated_);
    }
  }

 private:
  void update() {
    const auto player = player_.lock();
    auto* const native = dynamic_cast<NativePicture*>(player.get());
    const auto paintable = native != nullptr ? native->paintable() : Glib::RefPtr<Gdk::Paintable>();
    if (picture_.get_paintable() != paintable) picture_.set_paintable(paintable);
  }

  Gtk::Picture picture_;
  std::weak_ptr<MediaPlayer> player_;
  std::shared_ptr<std::function<void()>> updated_ =
      std::make_shared<std::function<void()>>([this] { update(); });
};

}  // namespace

std::unique_ptr<LayerContent> makeLayerContent(ui::Layer& layer) {
  if (dynamic_cast<ui::ShapeLayer*>(&layer) != nullptr) return std::make_unique<ShapeContent>();
  if (dynamic_cast<ui::PlayerLayer*>(&layer) != nullptr) return std::make_unique<PlayerContent>();
  return nullptr;
}

}  // namespace vantorium::gtk
