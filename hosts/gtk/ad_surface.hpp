#pragma once

#include <gtkmm.h>

#include <functional>

#include "hosts/gtk/view_widget.hpp"

namespace vantorium::gtk {

/// The widget over an application's content in which ads are shown. It is always there, so that it knows the
/// size an ad would have; only while it is `open` does it take input, keeping the focus inside itself.
class AdSurface final : public ViewWidget {
 public:
  AdSurface();

  void setOpen(bool open);
  /// Called in the middle of layout when the size has changed: to be acted on later.
  std::function<void()> onResize;
  /// The user swiped in from the left or right edge.
  std::function<void()> onBackSwipe;

 protected:
  void size_allocate_vfunc(int width, int height, int baseline) override;

 private:
  void keepFocusInside();
  void watchEdges();

  int width_ = 0, height_ = 0;
};

}  // namespace vantorium::gtk
