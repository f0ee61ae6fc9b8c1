#include "screens/countdown_views.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vantorium {

void AnimatedCircleView::setProgress(double progress) {
  progress_ = progress;
  if (!circleLayer_) {
    circleLayer_ = std::make_shared<ui::ShapeLayer>();
    circleLayer_->setStrokeColor(fillColor_);
    circleLayer_->setLineWidth(lineWidth_);
    circleLayer_->setRoundCap(true);
    updateRing();
    addSublayer(circleLayer_);
  }
  circleLayer_->setStrokeStart(progress);
}

void AnimatedCircleView::layoutSubviews() {
  View::layoutSubviews();
  if (circleLayer_) updateRing();
}

void AnimatedCircleView::updateRing() {
  const double width = bounds().width - lineWidth_;
  const double height = bounds().height - lineWidth_;
  circleLayer_->setFrame({lineWidth_ * 0.5, lineWidth_ * 0.5, width, height});
  circleLayer_->setRoundedRect({0, 0, width, height}, width * 0.5);
}

void TimerView::update(double progress, double duration) {
  prepareControls();
  circleView_->setProgress(progress);
  duration_ = duration * (1 - progress);
  updateLabel();
}

void TimerView::timerHandler(std::unique_ptr<Timer>& timer) {
  duration_ -= 1;
  if (duration_ < 0) {
    timer.reset();
    return;
  }
  prepareControls();
  updateLabel();
}

void TimerView::prepareControls() {
  if (!label_) {
    label_ = std::make_shared<ui::Label>();
    label_->setAlignment(ui::TextAlignment::center);
    label_->setTextColor(ui::Color::white());
    label_->setFontSize(13);
    circleView_ = std::make_shared<AnimatedCircleView>();
  }
  label_->setFrame(bounds());
  addSubview(label_);
  circleView_->setFrame(bounds());
  addSubview(circleView_);
}

void TimerView::updateLabel() {
  // A video that states no sensible length must not end the process.
  const double seconds = std::isfinite(duration_) ? std::clamp(std::trunc(duration_), -1e9, 1e9) : 0;
  label_->setText(fmt::format("{}", static_cast<std::int64_t>(seconds) + 1));
}

void TimerView::layoutSubviews() {
  View::layoutSubviews();
  if (!label_) return;
  label_->setFrame(bounds());
  circleView_->setFrame(bounds());
}

}  // namespace vantorium
