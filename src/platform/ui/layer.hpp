#pragma once

#include <memory>

#include <vantorium/export.h>

#include "platform/ui/geometry.hpp"

namespace vantorium {
class MediaPlayer;
}

namespace vantorium::ui {

class View;

/// A drawn part of a view, behind its subviews. Main thread only.
class VANTORIUM_HOST_API Layer {
 public:
  virtual ~Layer() = default;

  /// In the coordinates of the view that holds the layer.
  Rect frame() const { return frame_; }
  void setFrame(Rect frame);
  bool isHidden() const { return hidden_; }
  void setHidden(bool hidden);
  View* view() const { return view_; }

 protected:
  void setNeedsDisplay();

 private:
  friend class View;
  Rect frame_;
  bool hidden_ = false;
  View* view_ = nullptr;
};

/// The outline of a rounded rectangle, drawn from a fraction of its length to its end. The outline starts at
/// the middle of the top and runs clockwise.
class VANTORIUM_HOST_API ShapeLayer : public Layer {
 public:
  /// The rectangle (in the layer's coordinates) and its corner radius.
  void setRoundedRect(Rect rect, double cornerRadius);
  Rect rect() const { return rect_; }
  double cornerRadius() const { return cornerRadius_; }

  Color fillColor() const { return fill_; }
  void setFillColor(Color color);
  Color strokeColor() const { return stroke_; }
  void setStrokeColor(Color color);
  double lineWidth() const { return lineWidth_; }
  void setLineWidth(double width);
  bool hasRoundCap() const { return roundCap_; }
  void setRoundCap(bool round);
  /// The fraction of the outline's length, 0 to 1, from which it is drawn.
  double strokeStart() const { return strokeStart_; }
  void setStrokeStart(double fraction);

 private:
  Rect rect_;
  double cornerRadius_ = 0;
  Color fill_ = Color::clear();
  Color stroke_ = Color::clear();
  double lineWidth_ = 1;
  bool roundCap_ = false;
  double strokeStart_ = 0;
};

/// How a video fills its layer: letterboxed, or cropped.
enum class VideoGravity { resizeAspect, resizeAspectFill };

/// Shows what a player plays.
class VANTORIUM_HOST_API PlayerLayer : public Layer {
 public:
  /// `player` may be null: nothing is shown then.
  explicit PlayerLayer(std::shared_ptr<MediaPlayer> player) : player_(std::move(player)) {}

  const std::shared_ptr<MediaPlayer>& player() const { return player_; }
  void setPlayer(std::shared_ptr<MediaPlayer> player);
  VideoGravity videoGravity() const { return gravity_; }
  void setVideoGravity(VideoGravity gravity);

 private:
  std::shared_ptr<MediaPlayer> player_;
  VideoGravity gravity_ = VideoGravity::resizeAspect;
};

}  // namespace vantorium::ui
