#include "platform/ui/layer.hpp"

#include "platform/ui/view.hpp"

namespace vantorium::ui {

namespace {

/// Stores `value`; whether that changed anything.
template <typename Value>
bool assign(Value& stored, const Value& value) {
  if (stored == value) return false;
  stored = value;
  return true;
}

}  // namespace

void Layer::setNeedsDisplay() {
  if (view_ != nullptr) view_->setNeedsDisplay();
}

void Layer::setFrame(Rect frame) {
  if (assign(frame_, frame)) setNeedsDisplay();
}

void Layer::setHidden(bool hidden) {
  if (assign(hidden_, hidden)) setNeedsDisplay();
}

void ShapeLayer::setRoundedRect(Rect rect, double cornerRadius) {
  const bool moved = assign(rect_, rect);
  if (assign(cornerRadius_, cornerRadius) || moved) setNeedsDisplay();
}

void ShapeLayer::setFillColor(Color color) {
  if (assign(fill_, color)) setNeedsDisplay();
}

void ShapeLayer::setStrokeColor(Color color) {
  if (assign(stroke_, color)) setNeedsDisplay();
}

void ShapeLayer::setLineWidth(double width) {
  if (assign(lineWidth_, width)) setNeedsDisplay();
}

void ShapeLayer::setRoundCap(bool round) {
  if (assign(roundCap_, round)) setNeedsDisplay();
}

void ShapeLayer::setStrokeStart(double fraction) {
  if (assign(strokeStart_, fraction)) setNeedsDisplay();
}

void PlayerLayer::setPlayer(std::shared_ptr<MediaPlayer> player) {
  if (assign(player_, player)) setNeedsDisplay();
}

void PlayerLayer::setVideoGravity(VideoGravity gravity) {
  if (assign(gravity_, gravity)) setNeedsDisplay();
}

}  // namespace vantorium::ui
