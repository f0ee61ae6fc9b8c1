#include "hosts/gtk/native_ads/outlets.hpp"

#include <optional>
#include <string>
#include <utility>

#include "hosts/gtk/accessibility.hpp"
#include "hosts/gtk/native_ads/box_outlet.hpp"
#include "hosts/gtk/native_ads/tap_target.hpp"
#include "hosts/gtk/native_ads/weak_widget.hpp"
#include "hosts/gtk/picture_source.hpp"
#include "platform/ui/controls.hpp"

namespace vantorium::gtk {

namespace {

/// Longer texts serve no reader, and laying one out would hold up the application.
constexpr Glib::ustring::size_type longestText = 5000;

/// Text of an ad as widgets take it.
Glib::ustring presentable(const std::string& text) {
  const Glib::ustring valid = Glib::ustring(text).make_valid();
  return valid.size() > longestText ? valid.substr(0, longestText) + "…" : valid;
}

class LabelOutlet final : public Outlet {
 public:
  LabelOutlet(Gtk::Label& label, std::shared_ptr<ui::Label> view) : label_(label), view_(std::move(view)) {}

  Gtk::Widget* widget() override { return label_.get(); }
  void sync() override {
    // What the application made of the text since is left as it is.
    if (!label_ || put_ == view_->text()) return;
    put_ = view_->text();
    label_->set_text(presentable(*put_));
  }

 private:
  WeakWidget<Gtk::Label> label_;
  std::shared_ptr<ui::Label> view_;
  std::optional<std::string> put_;
};

class ButtonOutlet final : public Outlet {
 public:
  ButtonOutlet(Gtk::Button& button, std::shared_ptr<ui::Button> view)
      : button_(button), view_(std::move(view)) {
    clicked_ = button.signal_clicked().connect([weak = std::weak_ptr(view_)] {
      if (const auto tapped = weak.lock()) tapped->handleTap();
    });
  }
  ~ButtonOutlet() override { clicked_.disconnect(); }

  Gtk::Widget* widget() override { return button_.get(); }
  void sync() override {
    if (!button_ || put_ == view_->title()) return;
    put_ = view_->title();
    Gtk::Widget* const child = button_->get_child();
    const bool isOwn = child != nullptr && gtk_button_get_label(button_->gobj()) == nullptr;
    if (auto* const label = isOwn ? labelIn(*child) : nullptr) {
      label->set_text(presentable(*put_));  // among whatever else the application put there
    } else {
      button_->set_label(presentable(*put_));
    }
  }

 private:
  static Gtk::Label* labelIn(Gtk::Widget& widget) {
    if (auto* const label = dynamic_cast<Gtk::Label*>(&widget)) return label;
    for (Gtk::Widget* child = widget.get_first_child(); child != nullptr; child = child->get_next_sibling()) {
      if (auto* const label = labelIn(*child)) return label;
    }
    return nullptr;
  }

  WeakWidget<Gtk::Button> button_;
  std::shared_ptr<ui::Button> view_;
  std::optional<std::string> put_;
  sigc::connection clicked_;
};

void putPicture(Gtk::Picture& widget, const Glib::RefPtr<Gdk::Paintable>& picture) {
  widget.set_paintable(picture);
}

void putPicture(Gtk::Image& widget, const Glib::RefPtr<Gdk::Paintable>& picture) {
  if (picture) {
    widget.set(picture);
  } else {
    widget.clear();
  }
}

template <typename Widget>
class PictureOutlet final : public Outlet {
 public:
  PictureOutlet(Widget& widget, const std::shared_ptr<ui::ImageView>& view,
                std::shared_ptr<ImageLoader> images)
      : widget_(widget),
        view_(view),
        taps_(widget, *view),
        source_(std::move(images), [this](const auto& picture) {
          if (widget_) putPicture(*widget_, picture);
        }) {
    rescaled_ = widget.property_scale_factor().signal_changed().connect(
        [this] { source_.rescale(widget_->get_scale_factor()); });
  }
  ~PictureOutlet() override { rescaled_.disconnect(); }

  Gtk::Widget* widget() override { return widget_.get(); }
  void sync() override {
    if (!widget_) return;
    source_.show(view_->image(), widget_->get_scale_factor());
    describePicture(*widget_, view_->accessibilityLabel());
    if (view_->clipsToBounds()) widget_->set_overflow(Gtk::Overflow::HIDDEN);
    taps_.sync();
  }

 private:
  WeakWidget<Widget> widget_;
  std::shared_ptr<ui::ImageView> view_;
  TapTarget taps_;
  PictureSource source_;
  sigc::connection rescaled_;
};

template <typename View>
std::shared_ptr<View> as(const std::shared_ptr<ui::View>& view) {
  return std::static_pointer_cast<View>(view);
}

}  // namespace

const char* widgetClassFor(const std::string& outlet) {
  if (outlet.ends_with("Label")) return "Gtk::Label";
  if (outlet.ends_with("Button")) return "Gtk::Button";
  if (outlet == "mediaView" || outlet == "ratingView") return "Gtk::Box";
  return "Gtk::Picture or a Gtk::Image";
}

bool fitsOutlet(const std::string& outlet, Gtk::Widget& widget) {
  if (outlet.ends_with("Label")) return dynamic_cast<Gtk::Label*>(&widget) != nullptr;
  if (outlet.ends_with("Button")) return dynamic_cast<Gtk::Button*>(&widget) != nullptr;
  if (outlet == "mediaView" || outlet == "ratingView") return dynamic_cast<Gtk::Box*>(&widget) != nullptr;
  return dynamic_cast<Gtk::Picture*>(&widget) != nullptr || dynamic_cast<Gtk::Image*>(&widget) != nullptr;
}

std::unique_ptr<Outlet> makeOutlet(Gtk::Widget& widget, const std::shared_ptr<ui::View>& view,
                                   const std::shared_ptr<ImageLoader>& images) {
  if (auto* const box = dynamic_cast<Gtk::Box*>(&widget)) return makeBoxOutlet(*box, view, images);
  if (auto* const label = dynamic_cast<Gtk::Label*>(&widget))
    return std::make_unique<LabelOutlet>(*label, as<ui::Label>(view));
  if (auto* const button = dynamic_cast<Gtk::Button*>(&widget))
    return std::make_unique<ButtonOutlet>(*button, as<ui::Button>(view));
  if (auto* const picture = dynamic_cast<Gtk::Picture*>(&widget))
    return std::make_unique<PictureOutlet<Gtk::Picture>>(*picture, as<ui::ImageView>(view), images);
  return std::make_unique<PictureOutlet<Gtk::Image>>(dynamic_cast<Gtk::Image&>(widget),
                                                     as<ui::ImageView>(view), images);
}

}  // namespace vantorium::gtk
