#include "hosts/gtk/snapshot.hpp"

namespace vantorium::gtk {

bool savePNG(Gtk::Window& window, const std::string& path) {
  GskRenderer* const renderer = gtk_native_get_renderer(GTK_NATIVE(window.gobj()));
  if (renderer == nullptr || !window.get_mapped()) return false;
  GdkPaintable* const paintable = gtk_widget_paintable_new(GTK_WIDGET(window.gobj()));
  GtkSnapshot* const snapshot = gtk_snapshot_new();
  gdk_paintable_snapshot(paintable, snapshot, window.get_width(), window.get_height());
  GskRenderNode* const node = gtk_snapshot_free_to_node(snapshot);
  g_object_unref(paintable);
  if (node == nullptr) return false;
  graphene_rect_t area;
  graphene_rect_init(&area, 0, 0, static_cast<float>(window.get_width()),
                     static_cast<float>(window.get_height()));
  GdkTexture* const texture = gsk_renderer_render_texture(renderer, node, &area);
  gsk_render_node_unref(node);
  const bool saved = texture != nullptr && gdk_texture_save_to_png(texture, path.c_str());
  if (texture != nullptr) g_object_unref(texture);
  return saved;
}

}  // namespace vantorium::gtk
