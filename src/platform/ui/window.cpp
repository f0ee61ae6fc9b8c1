#include "platform/ui/window.hpp"

#include "platform/ui/view_controller.hpp"

namespace vantorium::ui {

void Window::treeDidChange() {
  if (dirty_) return;
  dirty_ = true;
  renderer_.windowNeedsCommit(*this);
}

void Window::resize(Size size, ViewController& root) {
  setFrame({0, 0, size.width, size.height});
  std::shared_ptr<ViewController> screen = root.shared_from_this();
  for (; screen; screen = screen->presentedViewController()) screen->viewWillTransition(size);
}

}  // namespace vantorium::ui
