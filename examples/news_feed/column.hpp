#pragma once

#include <gtkmm.h>

/// Gives a box's only child the box's width up to a limit, and centres it: lines of text stay readable in a
/// wide window.
class Column final : public Gtk::LayoutManager {
 public:
  /// The limit is in points.
  static Glib::RefPtr<Column> create(int widest) {
    return Glib::make_refptr_for_instance(new Column(widest));
  }

 protected:
  Gtk::SizeRequestMode get_request_mode_vfunc(const Gtk::Widget& box) const override;
  void measure_vfunc(const Gtk::Widget& box, Gtk::Orientation orientation, int forSize, int& minimum,
                     int& natural, int& minimumBaseline, int& naturalBaseline) const override;
  void allocate_vfunc(const Gtk::Widget& box, int width, int height, int baseline) override;

 private:
  explicit Column(int widest) : widest_(widest) {}

  const int widest_;
};
