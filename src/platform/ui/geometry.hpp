#pragma once

#include <algorithm>
#include <cmath>

namespace vantorium::ui {

/// Lengths are in points, a host's device-independent pixels; x grows to the right and y downwards.
struct Point {
  double x = 0, y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
  double width = 0, height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

struct Rect {
  double x = 0, y = 0, width = 0, height = 0;
  Point center() const { return {x + width / 2, y + height / 2}; }
  Size size() const { return {width, height}; }
  friend bool operator==(const Rect&, const Rect&) = default;
};

/// Whether the two have some area in common.
inline bool intersects(const Rect& a, const Rect& b) {
  return std::min(a.x + a.width, b.x + b.width) > std::max(a.x, b.x) &&
         std::min(a.y + a.height, b.y + b.height) > std::max(a.y, b.y);
}

/// Maps (x, y) to (a·x + c·y + tx, b·x + d·y + ty).
struct AffineTransform {
  double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;

  /// Turns clockwise, as seen on screen, by `angle` radians. Quarter turns are exact.
  static AffineTransform rotation(double angle) {
    const auto exact = [](double value) { return std::abs(value) < 1e-12 ? 0.0 : value; };
    const double sine = exact(std::sin(angle)), cosine = exact(std::cos(angle));
    return {cosine, sine, -sine, cosine, 0, 0};
  }
  /// The angle of a transform that only rotates, in radians, -π to π.
  double angle() const { return std::atan2(b, a); }
  /// The size of the box around a rectangle of `size` after the transform.
  Size boundingSize(Size size) const {
    return {std::abs(a) * size.width + std::abs(c) * size.height,
            std::abs(b) * size.width + std::abs(d) * size.height};
  }
  Point apply(Point p) const { return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty}; }
  friend bool operator==(const AffineTransform&, const AffineTransform&) = default;
};

/// Red, green, blue and alpha, 0 to 1.
struct Color {
  double red = 0, green = 0, blue = 0, alpha = 0;
  static constexpr Color clear() { return {}; }
  static constexpr Color black(double alpha = 1) { return {0, 0, 0, alpha}; }
  static constexpr Color white(double alpha = 1) { return {1, 1, 1, alpha}; }
  friend bool operator==(const Color&, const Color&) = default;
};

}  // namespace vantorium::ui
