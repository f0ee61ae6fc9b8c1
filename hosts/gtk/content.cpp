#include "hosts/gtk/content.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "hosts/gtk/accessibility.hpp"
#include "hosts/gtk/native.hpp"
#include "hosts/gtk/picture_source.hpp"
#include "hosts/gtk/style.hpp"
#include "platform/ui/controls.hpp"

namespace vantorium::gtk {

namespace {

constexpr double smallestTarget = 44;  // points that a finger needs

/// Shows an image of the SDK's bundle, decoded for the size and the scale at which it is shown.
class Icon {
 public:
  Icon(std::shared_ptr<ImageLoader> images, bool mayEnlarge)
      : images_(std::move(images)), mayEnlarge_(mayEnlarge) {
    picture_.set_content_fit(Gtk::ContentFit::CONTAIN);
    picture_.set_halign(Gtk::Align::CENTER);
    picture_.set_valign(Gtk::Align::CENTER);
    picture_.property_scale_factor().signal_changed().connect([this] { show(name_, size_); });
  }

  Gtk::Picture& widget() { return picture_; }

  void show(const ui::ImageName& name, ui::Size size) {
    name_ = name;
    size_ = size;
    const int scale = picture_.get_scale_factor();
    const auto image =
        images_->bundled({name, static_cast<int>(std::floor(size.width * scale)),
                          static_cast<int>(std::floor(size.height * scale)), scale, mayEnlarge_});
    picture_.set_visible(!name.empty());
    if (picture_.get_paintable() == image) return;
    picture_.set_paintable(image);
    if (image) picture_.set_size_request(image->get_width() / scale, image->get_height() / scale);
  }

 private:
  std::shared_ptr<ImageLoader> images_;
  bool mayEnlarge_;
  Gtk::Picture picture_;
  ui::ImageName name_;
  ui::Size size_;
};

class LabelContent final : public Content {
 public:
  LabelContent() {
    label_.set_yalign(0.5);
    label_.set_wrap_mode(Pango::WrapMode::WORD_CHAR);
    label_.set_ellipsize(Pango::EllipsizeMode::END);
  }

  Gtk::Widget& widget() override { return label_; }

  void sync(ui::View& view) override {
    const auto& source = static_cast<const ui::Label&>(view);
    label_.set_text(source.text());
    auto attributes = textAttributes(source.fontSize(), source.isBold(), source.textColor());
    label_.set_attributes(attributes);
    const float x = source.alignment() == ui::TextAlignment::center  ? 0.5F
                    : source.alignment() == ui::TextAlignment::right ? 1.0F
                                                                     : 0.0F;
    label_.set_xalign(x);
    label_.set_justify(x == 0   ? Gtk::Justification::LEFT
                       : x == 1 ? Gtk::Justification::RIGHT
                                : Gtk::Justification::CENTER);
    const int lines = source.numberOfLines() != 0 ? source.numberOfLines() : linesThatFit(source);
    label_.set_wrap(lines != 1);
    label_.set_lines(lines);
    if (!source.accessibilityLabel().empty()) setAccessibleLabel(label_, source.accessibilityLabel());
  }

 private:
  int linesThatFit(const ui::Label& source) {
    auto layout = label_.create_pango_layout("X");
    auto attributes = textAttributes(source.fontSize(), source.isBold(), source.textColor());
    layout->set_attributes(attributes);
    int width = 0, height = 0;
    layout->get_pixel_size(width, height);
    return std::max(1, static_cast<int>(source.bounds().height / std::max(1, height)));
  }

  Gtk::Label label_;
};

class ButtonContent final : public Content {
 public:
  explicit ButtonContent(std::shared_ptr<ImageLoader> images) : icon_(std::move(images), false) {
    title_.set_ellipsize(Pango::EllipsizeMode::END);
    box_.set_halign(Gtk::Align::CENTER);
    box_.set_valign(Gtk::Align::CENTER);
    box_.append(icon_.widget());
    box_.append(title_);
    button_.set_child(box_);
    button_.signal_clicked().connect([this] {
      if (const auto source = source_.lock()) source->handleTap();
    });
  }

  Gtk::Widget& widget() override { return button_; }

  Placement placement(const ui::View& view) const override {
    Placement placement = Content::placement(view);
    placement.size = {std::max(placement.size.width, smallestTarget),
                      std::max(placement.size.height, smallestTarget)};
    return placement;
  }

  void sync(ui::View& view) override {
    source_ = view.weak_from_this();
    const auto& source = static_cast<const ui::Button&>(view);
    applyButtonStyle(button_, source.cornerRadius());
    title_.set_visible(!source.title().empty());
    title_.set_text(source.title());
    auto attributes = textAttributes(source.fontSize(), true, source.titleColor());
    title_.set_attributes(attributes);
    icon_.show(source.image(), source.bounds().size());
    box_.set_spacing(source.title().empty() || source.image().empty() ? 0 : 8);
    button_.set_opacity(source.isHighlighted() ? 0.6 : 1);
    setAccessibleLabel(button_,
                       source.accessibilityLabel().empty() ? source.title() : source.accessibilityLabel());
    syncToggle(source);
  }

 private:
  // Only a button that was ever selected is told to assistive technology as a toggle.
  void syncToggle(const ui::Button& source) {
    isToggle_ |= source.isSelected();
    if (!isToggle_) return;
    gtk_accessible_update_state(
        GTK_ACCESSIBLE(button_.gobj()), GTK_ACCESSIBLE_STATE_PRESSED,
        source.isSelected() ? GTK_ACCESSIBLE_TRISTATE_TRUE : GTK_ACCESSIBLE_TRISTATE_FALSE, -1);
  }

  Icon icon_;
  Gtk::Label title_;
  Gtk::Box box_;
  Gtk::Button button_;
  bool isToggle_ = false;
  std::weak_ptr<ui::View> source_;
};

class ImageContent final : public Content {
 public:
  explicit ImageContent(const std::shared_ptr<ImageLoader>& images)
      : icon_(images, true), source_(images, [this](const auto& shown) { picture_.set_paintable(shown); }) {
    box_.append(icon_.widget());
    box_.append(picture_);
    icon_.widget().set_expand();
    picture_.set_expand();
    picture_.property_scale_factor().signal_changed().connect(
        [this] { source_.rescale(picture_.get_scale_factor()); });
  }

  Gtk::Widget& widget() override { return box_; }

  void sync(ui::View& view) override {
    const auto& source = static_cast<const ui::ImageView&>(view);
    const bool isBundled = source.image() && source.image()->isBundled();
    icon_.show(isBundled ? source.image()->name() : "", source.bounds().size());
    picture_.set_visible(!isBundled);
    picture_.set_content_fit(source.contentMode() == ui::ContentMode::scaleAspectFill
                                 ? Gtk::ContentFit::COVER
                                 : Gtk::ContentFit::CONTAIN);
    source_.show(isBundled ? nullptr : source.image(), picture_.get_scale_factor());
    describePicture(isBundled ? icon_.widget() : picture_, source.accessibilityLabel());
  }

 private:
  Icon icon_;
  Gtk::Picture picture_;
  PictureSource source_;
  Gtk::Box box_;
};

/// Shows what the view brings with it.
class NativeContent final : public Content {
 public:
  explicit NativeContent(std::shared_ptr<Gtk::Widget> widget) : widget_(std::move(widget)) {}
  Gtk::Widget& widget() override { return *widget_; }
  void sync(ui::View&) override {}

 private:
  std::shared_ptr<Gtk::Widget> widget_;
};

}  // namespace

std::unique_ptr<Content> makeContent(ui::View& view, std::shared_ptr<ImageLoader> images) {
  if (auto* const native = dynamic_cast<NativeWidget*>(&view))
    return std::make_unique<NativeContent>(native->widget());
  if (dynamic_cast<ui::Label*>(&view) != nullptr) return std::make_unique<LabelContent>();
  if (dynamic_cast<ui::Button*>(&view) != nullptr) return std::make_unique<ButtonContent>(std::move(images));
  if (dynamic_cast<ui::ImageView*>(&view) != nullptr) return std::make_unique<ImageContent>(images);
  return nullptr;
}

}  // namespace vantorium::gtk
