#pragma once

#include <memory>

#include "platform/foundation/clock.hpp"
#include "platform/ui/controls.hpp"
#include "platform/ui/layer.hpp"
#include "platform/ui/view.hpp"

namespace vantorium {

/// A thin ring of which a part is gone. Main thread only, like every view.
class AnimatedCircleView : public ui::View {
 public:
  using View::View;
  const char* className() const override { return "AnimatedCircleView"; }

  /// How much of the ring is gone, 0 to 1.
  double progress() const { return progress_; }
  void setProgress(double progress);
  void layoutSubviews() override;

 private:
  void updateRing();

  const ui::Color fillColor_ = ui::Color::white(0.42);
  const double lineWidth_ = 1.5;
  double progress_ = 0;
  std::shared_ptr<ui::ShapeLayer> circleLayer_;
};

/// Seconds left, in the middle of a ring that empties. It keeps no clock: its owner updates it.
class TimerView : public ui::View {
 public:
  using View::View;
  const char* className() const override { return "TimerView"; }

  /// Shows that the fraction `progress` (0 to 1) of `duration` seconds has passed.
  void update(double progress, double duration);
  /// One second of a repeating timer that somebody aims at this view: counts down, or ends the timer after
  /// zero.
  void timerHandler(std::unique_ptr<Timer>& timer);
  /// Seconds left.
  double duration() const { return duration_; }
  void layoutSubviews() override;

 private:
  void prepareControls();
  void updateLabel();

  double duration_ = 0;
  std::shared_ptr<ui::Label> label_;
  std::shared_ptr<AnimatedCircleView> circleView_;
};

}  // namespace vantorium
