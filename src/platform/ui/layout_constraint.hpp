#pragma once

#include <memory>

namespace vantorium::ui {

class View;

enum class LayoutAttribute {
  none,
  left,
  right,
  top,
  bottom,
  leading,
  trailing,
  width,
  height,
  centerX,
  centerY
};

/// first.attribute = second.attribute × multiplier + constant. Without a second view the constant alone
/// counts. Leading and trailing are left and right: ad screens are not mirrored.
struct LayoutConstraint {
  std::weak_ptr<View> first;
  LayoutAttribute firstAttribute = LayoutAttribute::none;
  std::weak_ptr<View> second;
  LayoutAttribute secondAttribute = LayoutAttribute::none;
  double multiplier = 1;
  double constant = 0;
};

/// Gives the subviews of `container` the frames that its constraints ask for, in the order in which they were
/// added. An edge or size that no constraint names stays as it is.
void solveConstraints(View& container);

}  // namespace vantorium::ui
