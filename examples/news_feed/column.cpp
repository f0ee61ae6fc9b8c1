#include "column.hpp"

#include <algorithm>

Gtk::SizeRequestMode Column::get_request_mode_vfunc(const Gtk::Widget&) const {
  return Gtk::SizeRequestMode::HEIGHT_FOR_WIDTH;
}

void Column::measure_vfunc(const Gtk::Widget& box, Gtk::Orientation orientation, int forSize, int& minimum,
                           int& natural, int& minimumBaseline, int& naturalBaseline) const {
  const bool isHeight = orientation == Gtk::Orientation::VERTICAL;
  box.get_first_child()->measure(orientation, isHeight ? std::min(forSize, widest_) : forSize, minimum,
                                 natural, minimumBaseline, naturalBaseline);
  if (!isHeight) natural = std::clamp(natural, minimum, std::max(minimum, widest_));
}

void Column::allocate_vfunc(const Gtk::Widget& box, int width, int height, int baseline) {
  // GTK hands the box out as constant; its child is not.
  auto* const child = const_cast<Gtk::Widget*>(box.get_first_child());
  const int columnWidth = std::min(width, widest_);
  child->size_allocate({(width - columnWidth) / 2, 0, columnWidth, height}, baseline);
}
