#pragma once

#include <memory>

#include "hosts/gtk/native_ads/outlets.hpp"

namespace vantorium::gtk {

/// Puts the view, which draws itself, into a box of the application.
std::unique_ptr<Outlet> makeBoxOutlet(Gtk::Box& box, const std::shared_ptr<ui::View>& view,
                                      const std::shared_ptr<ImageLoader>& images);

}  // namespace vantorium::gtk
