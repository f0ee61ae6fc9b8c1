#include "platform/ui/view.hpp"

#include <algorithm>
#include <array>
#include <cassert>

#include "platform/ui/view_controller.hpp"
#include "platform/ui/window.hpp"

namespace vantorium::ui {

View::View(Rect frame) : size_(frame.size()), center_(frame.center()) {}

View::~View() {
  for (const auto& subview : subviews_) subview->superview_ = nullptr;
  for (const auto& layer : layers_) layer->view_ = nullptr;
}

void View::checkThread() const {
  assert(std::this_thread::get_id() == thread_ && "views are changed on the main thread only");
}

Rect View::frame() const {
  const Size box = transform_.boundingSize(size_);
  return {center_.x - box.width / 2, center_.y - box.height / 2, box.width, box.height};
}

Rect View::frameInWindow() const {
  std::array<Point, 4> corners{{{0, 0}, {size_.width, 0}, {0, size_.height}, {size_.width, size_.height}}};
  for (const View* each = this; each->superview_ != nullptr; each = each->superview_) {
    for (Point& corner : corners) {
      const Point turned =
          each->transform_.apply({corner.x - each->size_.width / 2, corner.y - each->size_.height / 2});
      corner = {turned.x + each->center_.x, turned.y + each->center_.y};
    }
  }
  const auto [left, right] = std::minmax({corners[0].x, corners[1].x, corners[2].x, corners[3].x});
  const auto [top, bottom] = std::minmax({corners[0].y, corners[1].y, corners[2].y, corners[3].y});
  return {left, top, right - left, bottom - top};
}

void View::setFrame(Rect frame) {
  const double determinant = transform_.a * transform_.d - transform_.b * transform_.c;
  Size size = frame.size();
  if (determinant != 0) {
    const AffineTransform inverse{transform_.d / determinant, -transform_.b / determinant,
                                  -transform_.c / determinant, transform_.a / determinant};
    size = inverse.boundingSize(size);
  }
  if (size == size_ && frame.center() == center_) return;
  if (size != size_) setNeedsLayout();
  size_ = size;
  center_ = frame.center();
  setNeedsDisplay();
}

void View::setTransform(AffineTransform transform) {
  if (transform == transform_) return;
  transform_ = transform;
  setNeedsDisplay();
}

void View::setHidden(bool hidden) {
  if (hidden == hidden_) return;
  hidden_ = hidden;
  setNeedsDisplay();
}

void View::setAlpha(double alpha) {
  if (alpha == alpha_) return;
  alpha_ = alpha;
  setNeedsDisplay();
}

void View::setBackgroundColor(Color color) {
  if (color == background_) return;
  background_ = color;
  setNeedsDisplay();
}

void View::setCornerRadius(double radius) {
  if (radius == cornerRadius_) return;
  cornerRadius_ = radius;
  setNeedsDisplay();
}

void View::setClipsToBounds(bool clips) {
  if (clips == clips_) return;
  clips_ = clips;
  setNeedsDisplay();
}

void View::setAccessibilityLabel(std::string label) {
  if (label == accessibilityLabel_) return;
  accessibilityLabel_ = std::move(label);
  setNeedsDisplay();
}

void View::addSubview(std::shared_ptr<View> view) {
  if (!view || view.get() == this || view->superview_ == this) return;
  view->removeFromSuperview();
  view->superview_ = this;
  subviews_.push_back(view);
  setNeedsLayout();
  if (window() != nullptr) view->tellMovedToWindow();
}

void View::tellMovedToWindow() {
  // Copies: whoever hears of it may take views away.
  const auto self = shared_from_this();
  const auto subviews = subviews_;
  didMoveToWindow();
  for (const auto& subview : subviews) {
    if (subview->superview_ == this) subview->tellMovedToWindow();
  }
}

void View::removeFromSuperview() {
  if (superview_ == nullptr) return;
  superview_->detach(*this);
}

void View::detach(View& subview) {
  setNeedsDisplay();
  const auto found = std::find_if(subviews_.begin(), subviews_.end(),
                                  [&](const auto& each) { return each.get() == &subview; });
  if (found == subviews_.end()) return;
  const std::shared_ptr<View> kept = *found;
  const bool wasInWindow = window() != nullptr;
  subviews_.erase(found);
  kept->superview_ = nullptr;
  if (wasInWindow) kept->tellMovedToWindow();
}

Window* View::window() const { return superview_ != nullptr ? superview_->window() : nullptr; }

void View::addSublayer(std::shared_ptr<Layer> layer) {
  if (!layer || layer->view_ == this) return;
  layer->view_ = this;
  layers_.push_back(std::move(layer));
  setNeedsDisplay();
}

void View::addConstraint(LayoutConstraint constraint) {
  constraints_.push_back(std::move(constraint));
  setNeedsLayout();
}

void View::setNeedsLayout() {
  needsLayout_ = true;
  setNeedsDisplay();
}

void View::layoutIfNeeded() {
  if (needsLayout_) {
    needsLayout_ = false;
    solveConstraints(*this);
    layoutSubviews();
    if (controller_ != nullptr) controller_->viewDidLayoutSubviews();
  }
  const auto subviews = subviews_;
  for (const auto& subview : subviews) subview->layoutIfNeeded();
}

void View::addTapRecognizer(std::function<void()> handler) {
  tapHandler_ = std::move(handler);
  setNeedsDisplay();
}

void View::handleTap() {
  // A copy: the handler may take this view, and itself, away.
  if (const auto handler = tapHandler_) handler();
}

void View::setNeedsDisplay() {
  checkThread();
  View* root = this;
  while (root->superview_ != nullptr) root = root->superview_;
  root->treeDidChange();
}

}  // namespace vantorium::ui
