#pragma once

#include <gtkmm.h>

#include <memory>
#include <optional>
#include <vector>

#include "hosts/gtk/image_loader.hpp"
#include "hosts/gtk/native_ads/ticker.hpp"
#include "hosts/gtk/orientation_sensor.hpp"
#include "hosts/gtk/stage.hpp"
#include "platform/ui/application.hpp"

namespace vantorium::gtk {

/// The GTK application that the SDK lives in, by its attached windows.
class DesktopApplication final : public ui::Application {
 public:
  /// `print` writes a line to the application's console.
  DesktopApplication(std::string storeURL, std::function<void(std::string_view line)> print);

  void attach(Gtk::Window& window);
  const std::shared_ptr<ImageLoader>& images() const { return images_; }
  /// When to look what can be seen.
  Ticker& ticker() { return ticker_; }
  /// Whether a full-screen ad covers the content of the window.
  bool isCovered(GtkWindow* window) const;
  void holdDevice(ui::DeviceOrientation orientation) { sensor_.hold(orientation); }

  std::shared_ptr<ui::ViewController> rootViewController() override;
  ui::Rect screenBounds() const override;
  /// By the shape of what ads are shown in.
  ui::InterfaceOrientation interfaceOrientation() const override;
  ui::DeviceOrientation deviceOrientation() const override;
  void didPresent(ui::ViewController& screen, bool animated) override;
  void didDismiss(ui::ViewController& screen, bool animated) override;
  std::string storeURL(const std::string& productID) const override;

 protected:
  void performOpenURL(const std::string& url, std::function<void(bool opened)> completion) override;
  void refusedURL(const std::string& url) override;

 private:
  bool isWide() const;
  Stage* keyStage() const;
  Stage* stageWithAd() const;
  /// Where an ad is shown, or would be; null without a window.
  const Stage* screenStage() const;
  void closed(Stage& stage);
  void updateForeground();

  std::string storeURL_;
  std::function<void(std::string_view)> print_;
  std::shared_ptr<ImageLoader> images_ = std::make_shared<ImageLoader>();
  Ticker ticker_;
  std::vector<std::unique_ptr<Stage>> stages_;  ///< in the order in which they were attached
  OrientationSensor sensor_;
  /// The monitor's shape while the device was held in its natural way.
  mutable std::optional<bool> isNaturalMonitorWide_;
  bool isInForeground_ = false;
};

}  // namespace vantorium::gtk
