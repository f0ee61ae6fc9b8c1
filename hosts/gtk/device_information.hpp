#pragma once

#include <gtkmm.h>

#include <atomic>
#include <filesystem>
#include <memory>

#include <vantorium/gtk.hpp>

#include "hosts/gtk/device_services.hpp"
#include "hosts/gtk/fact_store.hpp"
#include "hosts/gtk/volume_monitor.hpp"
#include "platform/foundation/device_information.hpp"

namespace vantorium::gtk {

/// The device, as Linux and its desktop services tell it. Everything that could take time is observed or
/// refreshed in the background, so that `facts` answers at once.
class LinuxDevice final : public DeviceInformation {
 public:
  LinuxDevice(const HostOptions& options, const std::filesystem::path& preferences);

  DeviceFacts facts() const override;
  bool fileExists(const std::string& path) const override;
  bool createFile(const std::string& path) override;

  /// What the modem uses now; any thread, also after this object is gone.
  std::function<std::optional<std::string>()> radioTechnology() const;

 private:
  void watchMonitors();
  void refresh() const;

  std::shared_ptr<FactStore> store_;
  std::shared_ptr<std::atomic<bool>> isRefreshing_ = std::make_shared<std::atomic<bool>>(false);
  DeviceServices services_;
  VolumeMonitor volume_;
  Glib::RefPtr<Gio::ListModel> monitors_;
};

/// The identifier kept at `file`, made there at first use; none when it cannot be kept.
std::optional<std::string> advertisingIdentifier(const std::filesystem::path& file);

}  // namespace vantorium::gtk
