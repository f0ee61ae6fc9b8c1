#pragma once

#include <gtkmm.h>

#include <unordered_map>
#include <vector>

#include "platform/ui/geometry.hpp"

namespace vantorium::gtk {

/// Where a child lies in its parent: a box of this size, turned around its centre.
struct Placement {
  ui::Size size;
  ui::Point center;
  ui::AffineTransform transform;
  friend bool operator==(const Placement&, const Placement&) = default;

  static Placement filling(ui::Size size) { return {size, {size.width / 2, size.height / 2}, {}}; }
};

/// The widget of one view: a box with a background that lays out its children exactly where it is told. It
/// asks for no space of its own, and gives a child at least what that needs, around the same centre.
class ViewWidget : public Gtk::Widget {
 public:
  ViewWidget();
  ~ViewWidget() override;

  void setAppearance(ui::Color background, double cornerRadius, bool clips);
  /// Adds the child, taking it from where it was, or moves it.
  void place(Gtk::Widget& child, const Placement& placement);
  /// Takes the child out, unless another parent has it by now.
  void remove(Gtk::Widget& child);
  /// Stacks the children in this order, the last in front. All are children of this widget.
  void stack(const std::vector<Gtk::Widget*>& children);

 protected:
  Gtk::SizeRequestMode get_request_mode_vfunc() const override { return Gtk::SizeRequestMode::CONSTANT_SIZE; }
  void measure_vfunc(Gtk::Orientation, int, int& minimum, int& natural, int& minimumBaseline,
                     int& naturalBaseline) const override;
  void size_allocate_vfunc(int width, int height, int baseline) override;
  void snapshot_vfunc(const Glib::RefPtr<Gtk::Snapshot>& snapshot) override;

 private:
  std::unordered_map<const Gtk::Widget*, Placement> placements_;
  ui::Color background_;
  double cornerRadius_ = 0;
  bool clips_ = false;
};

}  // namespace vantorium::gtk
