#pragma once

#include <memory>

#include <vantorium/export.h>

#include "platform/ui/view.hpp"

namespace vantorium::ui {

class ViewController;
class Window;

/// Mirrors windows into real widgets. Implemented by a host.
class VANTORIUM_HOST_API Renderer {
 public:
  virtual ~Renderer() = default;

  /// Something in the window's tree changed. The renderer arranges that, once per turn of the main queue, the
  /// window's `layoutIfNeeded` and then `didCommit` are called and the tree is mirrored in between. Called
  /// once between two commits, on the main thread.
  virtual void windowNeedsCommit(Window& window) = 0;
};

/// The root of a tree: what one real window shows of the SDK. Ad screens are its subviews, the front-most
/// last. Main thread only. The renderer outlives it.
class VANTORIUM_HOST_API Window : public View {
 public:
  Window(Renderer& renderer, Rect frame) : View(frame), renderer_(renderer) {}
  const char* className() const override { return "Window"; }
  Window* window() const override { return const_cast<Window*>(this); }

  /// For renderers: the tree was mirrored, changes from now on are news.
  void didCommit() { dirty_ = false; }
  /// Changes the size of the window and of every screen in it; each screen hears of the transition.
  void resize(Size size, ViewController& root);

 protected:
  void treeDidChange() override;

 private:
  Renderer& renderer_;
  bool dirty_ = false;
};

}  // namespace vantorium::ui
