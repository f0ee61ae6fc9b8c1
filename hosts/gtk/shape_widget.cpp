#include "hosts/gtk/shape_widget.hpp"

#include <algorithm>
#include <array>
#include <numbers>

namespace vantorium::gtk {

namespace {

constexpr double quarterTurn = std::numbers::pi / 2;

// Starts in the middle of the top and runs clockwise.
void traceOutline(cairo_t* cairo, const ui::Rect& rect, double radius) {
  const double right = rect.x + rect.width, bottom = rect.y + rect.height;
  cairo_new_path(cairo);
  cairo_move_to(cairo, rect.center().x, rect.y);
  cairo_arc(cairo, right - radius, rect.y + radius, radius, -quarterTurn, 0);
  cairo_arc(cairo, right - radius, bottom - radius, radius, 0, quarterTurn);
  cairo_arc(cairo, rect.x + radius, bottom - radius, radius, quarterTurn, 2 * quarterTurn);
  cairo_arc(cairo, rect.x + radius, rect.y + radius, radius, 2 * quarterTurn, 3 * quarterTurn);
  cairo_close_path(cairo);
}

void setColor(cairo_t* cairo, ui::Color color) {
  cairo_set_source_rgba(cairo, color.red, color.green, color.blue, color.alpha);
}

}  // namespace

ShapeWidget::ShapeWidget() : Glib::ObjectBase("VantoriumShape") { set_can_target(false); }

void ShapeWidget::setShape(const ui::ShapeLayer& layer) {
  const ui::Rect frame = layer.frame(), rect = layer.rect();
  const Shape shape{{frame.x + rect.x, frame.y + rect.y, rect.width, rect.height},
                    std::clamp(layer.cornerRadius(), 0.0, std::min(rect.width, rect.height) / 2),
                    layer.lineWidth(),
                    std::clamp(layer.strokeStart(), 0.0, 1.0),
                    layer.hasRoundCap(),
                    layer.fillColor(),
                    layer.strokeColor()};
  if (shape == shape_) return;
  shape_ = shape;
  queue_draw();
}

void ShapeWidget::snapshot_vfunc(const Glib::RefPtr<Gtk::Snapshot>& snapshot) {
  if (shape_.rect.width <= 0 || shape_.rect.height <= 0) return;
  const double margin = shape_.lineWidth;
  graphene_rect_t area;
  graphene_rect_init(&area, static_cast<float>(shape_.rect.x - margin),
                     static_cast<float>(shape_.rect.y - margin),
                     static_cast<float>(shape_.rect.width + 2 * margin),
                     static_cast<float>(shape_.rect.height + 2 * margin));
  cairo_t* const cairo = gtk_snapshot_append_cairo(snapshot->gobj(), &area);
  draw(cairo);
  cairo_destroy(cairo);
}

void ShapeWidget::draw(cairo_t* cairo) const {
  const double radius = shape_.cornerRadius;
  traceOutline(cairo, shape_.rect, radius);
  if (shape_.fill.alpha > 0) {
    setColor(cairo, shape_.fill);
    cairo_fill_preserve(cairo);
  }
  const double straight = 2 * (shape_.rect.width + shape_.rect.height - 4 * radius);
  if (shape_.stroke.alpha > 0 && shape_.strokeStart < 1) stroke(cairo, straight + 4 * quarterTurn * radius);
}

void ShapeWidget::stroke(cairo_t* cairo, double outlineLength) const {
  setColor(cairo, shape_.stroke);
  cairo_set_line_width(cairo, shape_.lineWidth);
  cairo_set_line_cap(cairo, shape_.roundCap ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT);
  if (shape_.strokeStart > 0) {
    // One dash as long as the part that is drawn, shifted so that the gap comes first.
    const double gap = outlineLength * shape_.strokeStart, dash = outlineLength - gap;
    const std::array<double, 2> pattern{dash, gap};
    cairo_set_dash(cairo, pattern.data(), 2, dash);
  }
  cairo_stroke(cairo);
}

}  // namespace vantorium::gtk
