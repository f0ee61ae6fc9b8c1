#include "platform/ui/layout_constraint.hpp"

#include <optional>

#include "platform/ui/view.hpp"

namespace vantorium::ui {

namespace {

/// What is known of a view along one axis; two of the four values fix it.
struct Axis {
  std::optional<double> low, high, center, size;

  /// The low edge and size that follow, keeping what was there where nothing is asked.
  void resolve(double oldLow, double oldSize, double& newLow, double& newSize) const {
    newSize = size.value_or(oldSize);
    if (!size && low && high) newSize = *high - *low;
    if (!size && center && low && !high) newSize = 2 * (*center - *low);
    if (!size && center && high && !low) newSize = 2 * (*high - *center);
    newLow = oldLow;
    if (low) {
      newLow = *low;
    } else if (high) {
      newLow = *high - newSize;
    } else if (center) {
      newLow = *center - newSize / 2;
    }
  }
};

double valueOf(const Rect& rect, LayoutAttribute attribute) {
  switch (attribute) {
    case LayoutAttribute::left:
    case LayoutAttribute::leading:
      return rect.x;
    case LayoutAttribute::right:
    case LayoutAttribute::trailing:
      return rect.x + rect.width;
    case LayoutAttribute::top:
      return rect.y;
    case LayoutAttribute::bottom:
      return rect.y + rect.height;
    case LayoutAttribute::width:
      return rect.width;
    case LayoutAttribute::height:
      return rect.height;
    case LayoutAttribute::centerX:
      return rect.center().x;
    case LayoutAttribute::centerY:
      return rect.center().y;
    case LayoutAttribute::none:
      break;
  }
  return 0;
}

void ask(Axis& horizontal, Axis& vertical, LayoutAttribute attribute, double value) {
  switch (attribute) {
    case LayoutAttribute::left:
    case LayoutAttribute::leading:
      horizontal.low = value;
      break;
    case LayoutAttribute::right:
    case LayoutAttribute::trailing:
      horizontal.high = value;
      break;
    case LayoutAttribute::top:
      vertical.low = value;
      break;
    case LayoutAttribute::bottom:
      vertical.high = value;
      break;
    case LayoutAttribute::width:
      horizontal.size = value;
      break;
    case LayoutAttribute::height:
      vertical.size = value;
      break;
    case LayoutAttribute::centerX:
      horizontal.center = value;
      break;
    case LayoutAttribute::centerY:
      vertical.center = value;
      break;
    case LayoutAttribute::none:
      break;
  }
}

void place(View& container, View& view) {
  Axis horizontal, vertical;
  for (const LayoutConstraint& constraint : container.constraints()) {
    if (constraint.first.lock().get() != &view) continue;
    double value = constraint.constant;
    if (const auto other = constraint.second.lock()) {
      const Rect rect = other.get() == &container ? container.bounds() : other->frame();
      value += valueOf(rect, constraint.secondAttribute) * constraint.multiplier;
    }
    ask(horizontal, vertical, constraint.firstAttribute, value);
  }
  const Rect old = view.frame();
  Rect frame;
  horizontal.resolve(old.x, old.width, frame.x, frame.width);
  vertical.resolve(old.y, old.height, frame.y, frame.height);
  view.setFrame(frame);
}

}  // namespace

void solveConstraints(View& container) {
  const View* previous = nullptr;
  for (const LayoutConstraint& constraint : container.constraints()) {
    const auto view = constraint.first.lock();
    // Constraints of one view stand together; placing it once is enough.
    if (!view || view.get() == previous || view->superview() != &container) continue;
    previous = view.get();
    place(container, *view);
  }
}

}  // namespace vantorium::ui
