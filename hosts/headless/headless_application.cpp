#include "hosts/headless/headless_application.hpp"

#include <fmt/format.h>

namespace vantorium::headless {

HeadlessApplication::HeadlessApplication(std::shared_ptr<DispatchQueue> mainQueue, EventSink sink)
    : mainQueue_(std::move(mainQueue)), sink_(std::move(sink)) {
  window_ = std::make_shared<ui::Window>(*this, ui::Rect{0, 0, 390, 844});
  root_ = std::make_shared<ui::ViewController>(*this);
  window_->addSubview(root_->view().shared_from_this());
}

HeadlessApplication::~HeadlessApplication() {
  while (const auto screen = frontScreen()) screen->dismiss(false);
}

std::shared_ptr<ui::ViewController> HeadlessApplication::frontScreen() {
  std::shared_ptr<ui::ViewController> screen = root_->presentedViewController();
  while (screen && screen->presentedViewController()) screen = screen->presentedViewController();
  return screen;
}

void HeadlessApplication::didPresent(ui::ViewController& screen, bool animated) {
  if (auto* const sheet = dynamic_cast<ScriptedStoreSheet*>(&screen)) {
    sink_({{"event", "storeSheet"}, {"action", "present"}, {"product", sheet->productID()}});
    return;
  }
  sink_({{"event", "presented"}, {"screen", screen.className()}, {"animated", animated}});
}

void HeadlessApplication::didDismiss(ui::ViewController& screen, bool animated) {
  if (auto* const sheet = dynamic_cast<ScriptedStoreSheet*>(&screen)) {
    sink_({{"event", "storeSheet"}, {"action", "dismiss"}, {"product", sheet->productID()}});
    return;
  }
  sink_({{"event", "dismissed"}, {"screen", screen.className()}, {"animated", animated}});
}

std::string HeadlessApplication::storeURL(const std::string& productID) const {
  return "https://store.example/" + productID;
}

void HeadlessApplication::setTopMost(TopMost topMost) {
  hasWindow_ = topMost != TopMost::none;
  if (topMost == TopMost::transitioning) {
    root_->beginTransition();
  } else if (root_->isInTransition()) {
    root_->completeTransition();
  }
}

void HeadlessApplication::completeTransition() { root_->completeTransition(); }

void HeadlessApplication::setDeviceOrientation(ui::DeviceOrientation orientation) {
  device_ = orientation;
  post(ui::ApplicationEvent::deviceOrientationDidChange);
}

void HeadlessApplication::setScreen(ui::Size size) { window_->resize(size, *root_); }

void HeadlessApplication::windowNeedsCommit(ui::Window& window) {
  mainQueue_->async([weak = std::weak_ptr(window.shared_from_this())] {
    const auto view = weak.lock();
    if (!view) return;
    view->layoutIfNeeded();
    static_cast<ui::Window&>(*view).didCommit();
  });
}

void HeadlessApplication::performOpenURL(const std::string& url, std::function<void(bool)> completion) {
  sink_({{"event", "openURL"}, {"url", url}, {"opened", true}});
  completion(true);
}

void HeadlessApplication::refusedURL(const std::string& url) {
  sink_({{"event", "openURL"}, {"url", url}, {"opened", false}});
  sink_({{"event", "console"}, {"line", fmt::format("VANTORIUM: refused to open \"{}\" for an ad.", url)}});
}

}  // namespace vantorium::headless
