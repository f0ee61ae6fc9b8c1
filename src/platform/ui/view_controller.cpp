#include "platform/ui/view_controller.hpp"

#include <utility>

#include "platform/ui/application.hpp"
#include "platform/ui/window.hpp"

namespace vantorium::ui {

ViewController::~ViewController() {
  if (!view_) return;
  view_->controller_ = nullptr;
  view_->removeFromSuperview();
}

View& ViewController::view() {
  if (!view_) {
    view_ = loadView();
    view_->controller_ = this;
    try {
      viewDidLoad();
    } catch (...) {  // half a view is none
      const auto half = std::exchange(view_, nullptr);
      half->controller_ = nullptr;
      throw;
    }
  }
  return *view_;
}

std::shared_ptr<View> ViewController::loadView() {
  return std::make_shared<View>(application_.screenBounds());
}

void ViewController::present(const std::shared_ptr<ViewController>& screen, bool animated) {
  Window* const window = view().window();
  if (!screen || presented_ || screen->presenting_ != nullptr || window == nullptr) return;
  presented_ = screen;
  screen->presenting_ = this;
  try {
    screen->view().setFrame(window->bounds());
    if (screen->presenting_ != this) return;  // it ended while it was loaded
    window->addSubview(screen->view().shared_from_this());
    application_.didPresent(*screen, animated);
  } catch (...) {  // what could not be put up is not in front of anybody
    if (screen->view_) screen->view_->removeFromSuperview();
    screen->presenting_ = nullptr;
    presented_.reset();
    throw;
  }
  screen->viewDidAppear(animated);
}

void ViewController::dismiss(bool animated) {
  if (presenting_ == nullptr) return;
  // Held here: the presenting screen may own the last reference.
  const std::shared_ptr<ViewController> self = shared_from_this();
  if (presented_) presented_->dismiss(false);
  std::exchange(presenting_, nullptr)->presented_.reset();
  view().removeFromSuperview();
  application_.didDismiss(*this, animated);
  viewDidDisappear();
}

void ViewController::whenTransitionCompletes(std::function<void()> handler) {
  if (!inTransition_) {
    handler();
    return;
  }
  transitionHandlers_.push_back(std::move(handler));
}

void ViewController::completeTransition() {
  inTransition_ = false;
  for (const auto& handler : std::exchange(transitionHandlers_, {})) handler();
}

void ViewController::viewWillTransition(Size size) {
  if (view_) view_->setFrame({0, 0, size.width, size.height});
  viewDidTransition();
}

std::shared_ptr<ViewController> topMostViewController(Application& application) {
  std::shared_ptr<ViewController> screen = application.rootViewController();
  while (screen && screen->presentedViewController()) screen = screen->presentedViewController();
  return screen;
}

}  // namespace vantorium::ui
