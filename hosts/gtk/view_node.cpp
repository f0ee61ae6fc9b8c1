#include "hosts/gtk/view_node.hpp"

#include <algorithm>
#include <utility>

#include "hosts/gtk/native.hpp"
#include "platform/ui/controls.hpp"

namespace vantorium::gtk {

namespace {

// Text and pictures that do nothing leave the touch to what lies behind them.
bool isTransparentToTouches(const ui::View& view) {
  const bool isContent = dynamic_cast<const ui::Label*>(&view) != nullptr ||
                         dynamic_cast<const ui::ImageView*>(&view) != nullptr;
  return isContent && !view.recognizesTaps();
}

constexpr double barelyVisible = 0.01;  // below this alpha a view is not touched

Placement placementOf(const ui::View& view) {
  return {view.bounds().size(), view.center(), view.transform()};
}

}  // namespace

ViewNode::ViewNode(ui::View& view, std::shared_ptr<ImageLoader> images)
    : view_(view.weak_from_this()), images_(std::move(images)), content_(makeContent(view, images_)) {}

ViewNode::~ViewNode() {
  if (content_) widget_.remove(content_->widget());
}

void ViewNode::sync() {
  const auto view = view_.lock();
  if (!view) return;
  syncLook(*view);
  syncTapping(*view);
  syncLayers(*view);
  if (content_) {
    content_->sync(*view);
    widget_.place(content_->widget(), content_->placement(*view));
  }
  syncSubviews(*view);

  std::vector<Gtk::Widget*> order;
  for (const auto& layer : layers_) order.push_back(&layer.content->widget());
  if (content_) order.push_back(&content_->widget());
  for (const auto& subview : subviews_) order.push_back(&subview->widget());
  widget_.stack(order);
}

void ViewNode::syncLook(const ui::View& view) {
  widget_.setAppearance(view.backgroundColor(), view.cornerRadius(), view.clipsToBounds());
  widget_.set_opacity(view.alpha());
  widget_.set_can_target(view.alpha() >= barelyVisible && !isTransparentToTouches(view));
}

void ViewNode::syncTapping(const ui::View& view) {
  if (view.recognizesTaps() == static_cast<bool>(tapping_)) return;
  if (tapping_) {
    widget_.remove_controller(std::exchange(tapping_, {}));
    return;
  }
  tapping_ = Gtk::GestureClick::create();
  tapping_->signal_released().connect([this](int, double x, double y) {
    const auto tapped = view_.lock();
    if (!tapped || !widget_.contains(x, y)) return;
    tapping_->set_state(Gtk::EventSequenceState::CLAIMED);
    tapped->handleTap();
  });
  widget_.add_controller(tapping_);
}

void ViewNode::syncLayers(ui::View& view) {
  std::vector<LayerNode> next;
  for (const auto& layer : view.sublayers()) {
    const auto known = std::find_if(layers_.begin(), layers_.end(), [&](const LayerNode& node) {
      return node.content && node.layer.lock() == layer;
    });
    LayerNode node = known != layers_.end() ? std::move(*known) : LayerNode{layer, makeLayerContent(*layer)};
    if (!node.content) continue;
    node.content->sync(*layer);
    node.content->widget().set_child_visible(!layer->isHidden());
    widget_.place(node.content->widget(), node.content->placement(view, *layer));
    next.push_back(std::move(node));
  }
  for (const auto& gone : layers_) {
    if (gone.content) widget_.remove(gone.content->widget());
  }
  layers_ = std::move(next);
}

void ViewNode::syncSubviews(ui::View& view) {
  std::vector<std::unique_ptr<ViewNode>> next;
  for (const auto& subview : view.subviews()) {
    const auto known = std::find_if(subviews_.begin(), subviews_.end(),
                                    [&](const auto& node) { return node && node->mirrors(*subview); });
    auto node = known != subviews_.end() ? std::move(*known) : std::make_unique<ViewNode>(*subview, images_);
    node->sync();
    widget_.place(node->widget(), placementOf(*subview));
    // Not `visible`: a hidden page must know its size, and only a visible child is given one.
    node->widget().set_child_visible(!subview->isHidden());
    next.push_back(std::move(node));
  }
  for (const auto& gone : subviews_) {
    if (gone) widget_.remove(gone->widget());
  }
  subviews_ = std::move(next);
}

void ViewNode::reachFrontmostOnly() {
  for (const auto& subview : subviews_) {
    const bool isFrontmost = subview == subviews_.back();
    subview->widget().set_can_target(isFrontmost);
    subview->widget().set_can_focus(isFrontmost);
  }
}

Gtk::Widget* ViewNode::preferredFocus() {
  Gtk::Widget* const button = frontmost<ui::Button>();
  return button != nullptr ? button : frontmost<NativeWidget>();
}

template <typename T>
Gtk::Widget* ViewNode::frontmost() {
  // clang 14 cannot read the reversed view of libstdc++ 12.
  // NOLINTNEXTLINE(modernize-loop-convert)
  for (auto subview = subviews_.rbegin(); subview != subviews_.rend(); ++subview) {
    if (!(*subview)->widget().get_child_visible()) continue;
    if (Gtk::Widget* const found = (*subview)->frontmost<T>()) return found;
  }
  return content_ && dynamic_cast<T*>(view_.lock().get()) != nullptr ? &content_->widget() : nullptr;
}

}  // namespace vantorium::gtk
