#include "hosts/gtk/accessibility.hpp"

namespace vantorium::gtk {

void setAccessibleLabel(Gtk::Widget& widget, const std::string& label) {
  auto* const accessible = GTK_ACCESSIBLE(widget.gobj());
  if (label.empty()) {
    gtk_accessible_reset_property(accessible, GTK_ACCESSIBLE_PROPERTY_LABEL);
  } else {
    gtk_accessible_update_property(accessible, GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str(), -1);
  }
}

void describePicture(Gtk::Widget& picture, const std::string& label) {
  setAccessibleLabel(picture, label);
  gtk_accessible_update_state(GTK_ACCESSIBLE(picture.gobj()), GTK_ACCESSIBLE_STATE_HIDDEN,
                              static_cast<int>(label.empty()), -1);
}

}  // namespace vantorium::gtk
