#pragma once

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <vantorium/export.h>

#include "platform/ui/geometry.hpp"
#include "platform/ui/layer.hpp"
#include "platform/ui/layout_constraint.hpp"

namespace vantorium::ui {

class ViewController;
class Window;

/// A node of the retained tree that ad screens are made of. It draws nothing: a change marks the window
/// dirty, and once per turn of the main queue the host's renderer mirrors the tree into real widgets.
///
/// Main thread only (asserted). Made with `std::make_shared`; a view owns its subviews and layers.
class VANTORIUM_HOST_API View : public std::enable_shared_from_this<View> {
 public:
  explicit View(Rect frame = {});
  virtual ~View();
  View(const View&) = delete;
  View& operator=(const View&) = delete;

  /// The name of the concrete class, as interface files and snapshots write it.
  virtual const char* className() const { return "View"; }

  /// The box around the transformed view, in the superview's coordinates. Setting it places the view and
  /// sizes its bounds so that the transformed box fits it.
  Rect frame() const;
  void setFrame(Rect frame);
  /// The box around the view in the coordinates of the root of its tree.
  Rect frameInWindow() const;
  /// The view's own coordinates: origin zero.
  Rect bounds() const { return {0, 0, size_.width, size_.height}; }
  Point center() const { return center_; }
  /// Applied around the centre.
  const AffineTransform& transform() const { return transform_; }
  void setTransform(AffineTransform transform);

  bool isHidden() const { return hidden_; }
  void setHidden(bool hidden);
  double alpha() const { return alpha_; }
  void setAlpha(double alpha);
  Color backgroundColor() const { return background_; }
  void setBackgroundColor(Color color);
  double cornerRadius() const { return cornerRadius_; }
  void setCornerRadius(double radius);
  bool clipsToBounds() const { return clips_; }
  void setClipsToBounds(bool clips);

  /// What assistive technology says of the view; empty for nothing.
  const std::string& accessibilityLabel() const { return accessibilityLabel_; }
  void setAccessibilityLabel(std::string label);

  /// Adds in front of the other subviews, taking the view from where it was. A view that already is a subview
  /// stays in its place.
  void addSubview(std::shared_ptr<View> view);
  void removeFromSuperview();
  const std::vector<std::shared_ptr<View>>& subviews() const { return subviews_; }
  View* superview() const { return superview_; }
  /// The window whose tree this view is in; null while it is in none.
  virtual Window* window() const;
  /// The view, with everything below it, was put into a window, moved to another or taken out of one.
  /// Overriders call the base.
  virtual void didMoveToWindow() {}

  /// Layers lie behind the subviews. Adding one that is already there changes nothing.
  void addSublayer(std::shared_ptr<Layer> layer);
  const std::vector<std::shared_ptr<Layer>>& sublayers() const { return layers_; }

  /// Constraints between subviews of this view, or between one and this view. Solved in order before
  /// `layoutSubviews`, so a constraint may only refer to a view placed before.
  void addConstraint(LayoutConstraint constraint);
  const std::vector<LayoutConstraint>& constraints() const { return constraints_; }

  void setNeedsLayout();
  /// Lays out this view and everything below it that asked for it.
  void layoutIfNeeded();
  /// Places subviews after constraints were solved. Overriders call the base.
  virtual void layoutSubviews() {}

  /// Calls `handler` on each tap inside the view that no subview took.
  void addTapRecognizer(std::function<void()> handler);
  bool recognizesTaps() const { return static_cast<bool>(tapHandler_); }
  /// For renderers and tests: the user tapped the view. Buttons act; other views call their recogniser.
  virtual void handleTap();

  /// The name by which an interface file connected this view; empty for none.
  const std::string& outlet() const { return outlet_; }
  void setOutlet(std::string name) { outlet_ = std::move(name); }

 protected:
  /// Tells the root of the tree, so that its renderer looks at it again.
  void setNeedsDisplay();
  /// For roots: something in the tree has changed.
  virtual void treeDidChange() {}
  void checkThread() const;

 private:
  friend class Layer;
  friend class ViewController;
  void detach(View& subview);
  void tellMovedToWindow();

  Size size_;
  Point center_;
  AffineTransform transform_;
  bool hidden_ = false;
  bool clips_ = false;
  bool needsLayout_ = true;
  double alpha_ = 1;
  double cornerRadius_ = 0;
  Color background_ = Color::clear();
  std::string accessibilityLabel_, outlet_;
  View* superview_ = nullptr;
  ViewController* controller_ = nullptr;  ///< whose root view this is; it clears the pointer when it goes
  std::vector<std::shared_ptr<View>> subviews_;
  std::vector<std::shared_ptr<Layer>> layers_;
  std::vector<LayoutConstraint> constraints_;
  std::function<void()> tapHandler_;
  std::thread::id thread_ = std::this_thread::get_id();
};

}  // namespace vantorium::ui
