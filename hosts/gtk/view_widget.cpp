#include "hosts/gtk/view_widget.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vantorium::gtk {

namespace {

int wholePoints(double length) { return std::max(0, static_cast<int>(std::lround(length))); }

bool turnsOnly(const ui::AffineTransform& t) {
  return t.tx == 0 && t.ty == 0 && t.a == t.d && t.b == -t.c && std::abs(t.a * t.a + t.b * t.b - 1) < 1e-6;
}

GskTransform* moved(GskTransform* transform, double x, double y) {
  const graphene_point_t offset{static_cast<float>(x), static_cast<float>(y)};
  return gsk_transform_translate(transform, &offset);
}

GskTransform* applied(GskTransform* transform, const ui::AffineTransform& t) {
  if (t == ui::AffineTransform{}) return transform;
  if (turnsOnly(t))
    return gsk_transform_rotate(transform, static_cast<float>(t.angle() * 180 / std::numbers::pi));
  graphene_matrix_t matrix;
  graphene_matrix_init_from_2d(&matrix, t.a, t.b, t.c, t.d, t.tx, t.ty);
  return gsk_transform_matrix(transform, &matrix);
}

// An upright child is put on whole points, where its text and edges are sharp.
GskTransform* childTransform(const Placement& placement, int width, int height) {
  const double left = placement.center.x - width / 2.0, top = placement.center.y - height / 2.0;
  if (placement.transform == ui::AffineTransform{}) return moved(nullptr, std::round(left), std::round(top));
  GskTransform* const turned =
      applied(moved(nullptr, placement.center.x, placement.center.y), placement.transform);
  return moved(turned, -width / 2.0, -height / 2.0);
}

void allocate(Gtk::Widget& child, const Placement& placement) {
  int minimumWidth = 0, minimumHeight = 0, natural = 0, baseline = 0;
  child.measure(Gtk::Orientation::HORIZONTAL, -1, minimumWidth, natural, baseline, baseline);
  const int width = std::max(wholePoints(placement.size.width), minimumWidth);
  child.measure(Gtk::Orientation::VERTICAL, width, minimumHeight, natural, baseline, baseline);
  const int height = std::max(wholePoints(placement.size.height), minimumHeight);
  gtk_widget_allocate(child.gobj(), width, height, -1, childTransform(placement, width, height));
}

}  // namespace

ViewWidget::ViewWidget() : Glib::ObjectBase("VantoriumView") {}

ViewWidget::~ViewWidget() {
  while (Gtk::Widget* const child = get_first_child()) child->unparent();
}

void ViewWidget::setAppearance(ui::Color background, double cornerRadius, bool clips) {
  if (background == background_ && cornerRadius == cornerRadius_ && clips == clips_) return;
  background_ = background;
  cornerRadius_ = cornerRadius;
  clips_ = clips;
  set_overflow(clips ? Gtk::Overflow::HIDDEN : Gtk::Overflow::VISIBLE);
  queue_draw();
}

void ViewWidget::place(Gtk::Widget& child, const Placement& placement) {
  if (child.get_parent() != this) {
    if (child.get_parent() != nullptr) child.unparent();
    child.set_parent(*this);
  } else if (const auto known = placements_.find(&child);
             known != placements_.end() && known->second == placement) {
    return;
  }
  placements_[&child] = placement;
  queue_allocate();
}

void ViewWidget::remove(Gtk::Widget& child) {
  placements_.erase(&child);
  if (child.get_parent() == this) child.unparent();
}

void ViewWidget::stack(const std::vector<Gtk::Widget*>& children) {
  Gtk::Widget* previous = nullptr;
  for (Gtk::Widget* const child : children) {
    if (child->get_prev_sibling() != previous) {
      gtk_widget_insert_after(child->gobj(), gobj(), previous != nullptr ? previous->gobj() : nullptr);
    }
    previous = child;
  }
}

void ViewWidget::measure_vfunc(Gtk::Orientation, int, int& minimum, int& natural, int& minimumBaseline,
                               int& naturalBaseline) const {
  minimum = natural = 0;
  minimumBaseline = naturalBaseline = -1;
}

void ViewWidget::size_allocate_vfunc(int, int, int) {
  for (Gtk::Widget* child = get_first_child(); child != nullptr; child = child->get_next_sibling()) {
    const auto placement = placements_.find(child);
    if (placement != placements_.end() && child->should_layout()) allocate(*child, placement->second);
  }
}

void ViewWidget::snapshot_vfunc(const Glib::RefPtr<Gtk::Snapshot>& snapshot) {
  GtkSnapshot* const target = snapshot->gobj();
  graphene_rect_t area;
  graphene_rect_init(&area, 0, 0, static_cast<float>(get_width()), static_cast<float>(get_height()));
  GskRoundedRect outline;
  const double radius = std::min({cornerRadius_, get_width() / 2.0, get_height() / 2.0});
  gsk_rounded_rect_init_from_rect(&outline, &area, static_cast<float>(radius));
  const bool rounded = radius > 0;
  if (clips_) gtk_snapshot_push_rounded_clip(target, &outline);
  if (background_.alpha > 0) {
    const GdkRGBA color{static_cast<float>(background_.red), static_cast<float>(background_.green),
                        static_cast<float>(background_.blue), static_cast<float>(background_.alpha)};
    if (rounded && !clips_) gtk_snapshot_push_rounded_clip(target, &outline);
    gtk_snapshot_append_color(target, &color, &area);
    if (rounded && !clips_) gtk_snapshot_pop(target);
  }
  for (Gtk::Widget* child = get_first_child(); child != nullptr; child = child->get_next_sibling()) {
    snapshot_child(*child, snapshot);
  }
  if (clips_) gtk_snapshot_pop(target);
}

}  // namespace vantorium::gtk
