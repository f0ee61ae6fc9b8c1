#pragma once

#include <memory>
#include <vector>

#include "hosts/gtk/content.hpp"
#include "hosts/gtk/view_widget.hpp"
#include "platform/ui/view.hpp"

namespace vantorium::gtk {

/// Mirrors one view, with its layers and everything below it, into widgets. A view keeps its widgets for as
/// long as it stays under the same superview. Main thread only.
class ViewNode {
 public:
  ViewNode(ui::View& view, std::shared_ptr<ImageLoader> images);
  ~ViewNode();
  ViewNode(const ViewNode&) = delete;
  ViewNode& operator=(const ViewNode&) = delete;

  ViewWidget& widget() { return widget_; }
  /// Brings the widgets up to date with the view. Nothing happens once the view is gone.
  void sync();
  /// Only the front-most subview may be reached by pointer or keyboard.
  void reachFrontmostOnly();
  /// The widget of the front-most button below that can be seen, else of the front-most native view; or null.
  Gtk::Widget* preferredFocus();

 private:
  struct LayerNode {
    std::weak_ptr<ui::Layer> layer;
    std::unique_ptr<LayerContent> content;
  };

  bool mirrors(const ui::View& view) const { return view_.lock().get() == &view; }
  void syncLook(const ui::View& view);
  void syncTapping(const ui::View& view);
  void syncLayers(ui::View& view);
  void syncSubviews(ui::View& view);
  template <typename T>
  Gtk::Widget* frontmost();

  std::weak_ptr<ui::View> view_;
  std::shared_ptr<ImageLoader> images_;
  std::vector<LayerNode> layers_;
  std::unique_ptr<Content> content_;
  std::vector<std::unique_ptr<ViewNode>> subviews_;
  Glib::RefPtr<Gtk::GestureClick> tapping_;
  ViewWidget widget_;
};

}  // namespace vantorium::gtk
