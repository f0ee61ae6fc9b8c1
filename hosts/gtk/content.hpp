#pragma once

#include <gtkmm.h>

#include <memory>

#include "hosts/gtk/image_loader.hpp"
#include "hosts/gtk/view_widget.hpp"
#include "platform/ui/view.hpp"

namespace vantorium::gtk {

/// The toolkit's own widget inside a view of a class that shows something: text, an image, a control, a page.
class Content {
 public:
  virtual ~Content() = default;
  virtual Gtk::Widget& widget() = 0;
  /// Where the widget lies in the view.
  virtual Placement placement(const ui::View& view) const { return Placement::filling(view.bounds().size()); }
  /// Brings the widget up to date with the view, always the same one.
  virtual void sync(ui::View& view) = 0;
};

/// Null for views that only hold others.
std::unique_ptr<Content> makeContent(ui::View& view, std::shared_ptr<ImageLoader> images);

/// The same for the layers of a view.
class LayerContent {
 public:
  virtual ~LayerContent() = default;
  virtual Gtk::Widget& widget() = 0;
  virtual Placement placement(const ui::View& view, const ui::Layer& layer) const = 0;
  virtual void sync(ui::Layer& layer) = 0;
};

/// Null for layers of a class that draws nothing.
std::unique_ptr<LayerContent> makeLayerContent(ui::Layer& layer);

}  // namespace vantorium::gtk
