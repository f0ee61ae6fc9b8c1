#pragma once

#include <functional>
#include <memory>
#include <string>

#include <vantorium/dispatch_queue.hpp>

#include "hosts/headless/scripted.hpp"
#include "platform/ui/application.hpp"
#include "platform/ui/view_controller.hpp"
#include "platform/ui/window.hpp"

namespace vantorium::headless {

/// The application around the SDK: one window, whose root screen stands for the application's own interface.
class HeadlessApplication : public ui::Application, public ui::Renderer {
 public:
  HeadlessApplication(std::shared_ptr<DispatchQueue> mainQueue, EventSink sink);
  ~HeadlessApplication() override;

  std::shared_ptr<ui::ViewController> rootViewController() override { return hasWindow_ ? root_ : nullptr; }
  ui::Rect screenBounds() const override { return window_->bounds(); }
  ui::InterfaceOrientation interfaceOrientation() const override { return interface_; }
  ui::DeviceOrientation deviceOrientation() const override { return device_; }
  void didPresent(ui::ViewController& screen, bool animated) override;
  void didDismiss(ui::ViewController& screen, bool animated) override;
  std::string storeURL(const std::string& productID) const override;

  enum class TopMost { none, idle, transitioning };
  void setTopMost(TopMost topMost);
  void completeTransition();
  void setDeviceOrientation(ui::DeviceOrientation orientation);
  void setInterfaceOrientation(ui::InterfaceOrientation orientation) { interface_ = orientation; }
  void setScreen(ui::Size size);
  void enterBackground() { post(ui::ApplicationEvent::didEnterBackground); }
  void enterForeground() { post(ui::ApplicationEvent::willEnterForeground); }
  /// The application's own interface, for views of its own such as native ads. There without a window too.
  ui::View& rootView() { return root_->view(); }
  /// The ad screen in front, or null.
  std::shared_ptr<ui::ViewController> frontScreen();

 private:
  void windowNeedsCommit(ui::Window& window) override;
  void performOpenURL(const std::string& url, std::function<void(bool)> completion) override;
  void refusedURL(const std::string& url) override;

  const std::shared_ptr<DispatchQueue> mainQueue_;
  const EventSink sink_;
  std::shared_ptr<ui::Window> window_;
  std::shared_ptr<ui::ViewController> root_;
  bool hasWindow_ = true;
  ui::InterfaceOrientation interface_ = ui::InterfaceOrientation::portrait;
  ui::DeviceOrientation device_ = ui::DeviceOrientation::portrait;
};

}  // namespace vantorium::headless
