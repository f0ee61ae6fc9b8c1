#pragma once

#include <gtkmm.h>

/// The picture of the bay: a boat on the water, and whatever has been built so far.
class BayView final : public Gtk::DrawingArea {
 public:
  /// What can be built, in this order.
  enum Building { sail, lighthouse, whale, buildingCount };

  BayView();

  void setBuiltCount(int count);
  /// A coin jumps out of the water beside the boat.
  void tossCoin();
  /// Holds the picture still, as long as nobody can see it.
  void setStill(bool still);

 private:
  bool advance(const Glib::RefPtr<Gdk::FrameClock>& clock);
  void draw(const Cairo::RefPtr<Cairo::Context>& cairo, int width, int height) const;

  std::vector<double> coinTosses_;  ///< when each coin in the air was tossed
  double now_ = 0;                  ///< seconds of the animation
  gint64 lastFrame_ = 0;
  int built_ = 0;
  bool still_ = false;
};
