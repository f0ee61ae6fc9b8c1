#pragma once

#include <gtkmm.h>

#include "platform/ui/layer.hpp"

namespace vantorium::gtk {

/// Draws a shape layer. It covers the whole view that holds the layer and draws at the layer's place.
class ShapeWidget : public Gtk::Widget {
 public:
  ShapeWidget();

  void setShape(const ui::ShapeLayer& layer);

 protected:
  void snapshot_vfunc(const Glib::RefPtr<Gtk::Snapshot>& snapshot) override;

 private:
  struct Shape {
    ui::Rect rect;  ///< in the view's coordinates
    double cornerRadius = 0, lineWidth = 0, strokeStart = 0;
    bool roundCap = false;
    ui::Color fill, stroke;
    friend bool operator==(const Shape&, const Shape&) = default;
  };
  void draw(cairo_t* cairo) const;
  void stroke(cairo_t* cairo, double outlineLength) const;

  Shape shape_;
};

}  // namespace vantorium::gtk
