#include "hosts/gtk/native_ads/visibility.hpp"

#include "hosts/gtk/application.hpp"

namespace vantorium::gtk {

namespace {

constexpr double barelyVisible = 0.01;  // below this opacity nothing is seen

bool isWindowSeen(GtkWidget* widget) {
  GtkNative* const native = gtk_widget_get_native(widget);
  return native != nullptr && isInForeground(gtk_native_get_surface(native));
}

/// Whether anything is left of the widget when all that clips it has done so.
bool hasUnclippedPart(GtkWidget* widget) {
  graphene_rect_t left;
  graphene_rect_init(&left, 0, 0, static_cast<float>(gtk_widget_get_width(widget)),
                     static_cast<float>(gtk_widget_get_height(widget)));
  for (GtkWidget* each = widget; each != nullptr; each = gtk_widget_get_parent(each)) {
    if (gtk_widget_get_opacity(each) < barelyVisible) return false;
    const bool clips =
        gtk_widget_get_overflow(each) == GTK_OVERFLOW_HIDDEN || gtk_widget_get_parent(each) == nullptr;
    graphene_rect_t area;
    const bool isKnown = gtk_widget_compute_bounds(each, widget, &area);
    if (clips && isKnown && !graphene_rect_intersection(&left, &area, &left)) return false;
    if (GTK_IS_NATIVE(each)) break;  // a popover is not clipped by what it belongs to
  }
  return left.size.width > 0 && left.size.height > 0;
}

}  // namespace

bool isSeen(Gtk::Widget& widget, const DesktopApplication& application) {
  GtkWidget* const own = widget.gobj();
  if (own == nullptr || !gtk_widget_get_mapped(own) || !isWindowSeen(own)) return false;
  GtkRoot* const root = gtk_widget_get_root(own);
  if (GTK_IS_WINDOW(root) && application.isCovered(GTK_WINDOW(root))) return false;
  return hasUnclippedPart(own);
}

}  // namespace vantorium::gtk
