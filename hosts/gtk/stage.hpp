#pragma once

#include <gtkmm.h>

#include <functional>
#include <memory>
#include <vector>

#include "hosts/gtk/ad_surface.hpp"
#include "hosts/gtk/idle_call.hpp"
#include "hosts/gtk/image_loader.hpp"
#include "hosts/gtk/view_node.hpp"
#include "platform/ui/view_controller.hpp"
#include "platform/ui/window.hpp"

namespace vantorium::gtk {

/// Whether the surface is mapped and, being that of a window, not minimised.
bool isInForeground(GdkSurface* surface);

/// One attached window: lays a surface for ads over its content and mirrors the tree of its ads into it. Main
/// thread only.
class Stage final : private ui::Renderer {
 public:
  struct Events {
    /// The window is gone: let go of this stage.
    std::function<void(Stage&)> closed;
    /// Whether the user can see the window has changed.
    std::function<void()> foregroundDidChange;
  };
  Stage(Gtk::Window& window, ui::Application& application, std::shared_ptr<ImageLoader> images,
        Events events);
  ~Stage() override;

  std::shared_ptr<ui::ViewController> root() const { return root_; }
  bool hasAd() const { return root_->presentedViewController() != nullptr; }
  bool isVisible() const;
  /// Whether the monitor that the window is on is wider than tall.
  bool isMonitorWide() const;
  bool isActive() const;
  /// Neither hidden nor minimised.
  bool isInForeground() const;
  ui::Rect bounds() const;
  bool isOf(const GtkWindow* window) const { return window_.gobj() == window; }

 private:
  void windowNeedsCommit(ui::Window& window) override;
  void commit();
  void wrapContent();
  void watchWindow();
  void watchSurface();
  static void windowDestroyed(GtkWindow* window, Stage* self);
  void watchBackKeys();
  void addController(const Glib::RefPtr<Gtk::EventController>& controller);
  void letGoOfWindow();
  void resize();
  void setCovered(bool covered);
  void focusAd();
  void returnFocus();
  bool goBack();

  Gtk::Window& window_;
  Events events_;
  AdSurface surface_;
  Gtk::Overlay overlay_;
  std::shared_ptr<ui::ViewController> root_;
  std::shared_ptr<ui::Window> tree_;
  std::unique_ptr<ViewNode> mirror_;
  std::vector<sigc::connection> connections_;
  std::vector<Glib::RefPtr<Gtk::EventController>> controllers_;
  bool windowIsGone_ = false;
  bool isCovered_ = false;
  bool contentCouldFocus_ = true;
  GWeakRef previousFocus_{};
  IdleCall commit_{[this] { commit(); }};
  IdleCall resize_{[this] { resize(); }};
};

}  // namespace vantorium::gtk
