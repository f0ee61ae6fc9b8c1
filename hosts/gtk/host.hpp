#pragma once

#include <memory>

#include <vantorium/gtk.hpp>

#include "hosts/gtk/application.hpp"
#include "hosts/gtk/clock.hpp"
#include "hosts/gtk/device_information.hpp"
#include "hosts/gtk/main_queue.hpp"
#include "hosts/gtk/web_engine.hpp"
#include "platform/host.hpp"

namespace vantorium::gtk {

/// The ports of the GTK host, put together.
class DesktopHost final : public Host {
 public:
  explicit DesktopHost(HostOptions options);

  std::shared_ptr<DispatchQueue> mainQueue() override { return mainQueue_; }
  Clock& clock() override { return clock_; }
  DeviceInformation& device() override { return device_; }
  Directories directories() const override { return directories_; }
  std::unique_ptr<ReachabilityProbe> makeReachabilityProbe() override;
  void print(std::string_view line) override;

  DesktopApplication& application() override { return application_; }
  WebEngineGeneration webEngineGeneration() const override { return WebEngineGeneration::newer; }
  std::shared_ptr<WebEngine> makeWebEngine() override;
  std::shared_ptr<MediaPlayer> makePlayer(const std::string& source) override;
  std::shared_ptr<ui::StoreProductViewController> makeStoreProductViewController() override;

 private:
  HostOptions options_;
  Directories directories_;
  std::shared_ptr<MainQueue> mainQueue_ = std::make_shared<MainQueue>();
  MainLoopClock clock_;
  LinuxDevice device_;
  DesktopApplication application_;
  std::shared_ptr<WebContext> web_;  ///< made with the first page
};

}  // namespace vantorium::gtk
