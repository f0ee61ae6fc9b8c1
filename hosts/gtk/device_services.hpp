#pragma once

#include <gio/gio.h>

#include <memory>
#include <string>

#include "hosts/gtk/fact_store.hpp"
#include "hosts/gtk/system_service.hpp"

namespace vantorium::gtk {

/// Name, in the SDK's words, of the fastest of the radio technologies in ModemManager's bit set; none when
/// unknown.
std::optional<std::string> radioTechnologyName(std::uint32_t technologies);

/// Keeps the store up to date with what services of the system bus tell: battery (UPower), chassis
/// (hostnamed), carrier and radio (ModemManager). Main thread only.
class DeviceServices {
 public:
  explicit DeviceServices(std::shared_ptr<FactStore> store);
  ~DeviceServices();
  DeviceServices(const DeviceServices&) = delete;
  DeviceServices& operator=(const DeviceServices&) = delete;

 private:
  void updateBattery();
  void updateChassis();
  void connectModems(GDBusObjectManager* modems);
  void updateModems();

  std::shared_ptr<FactStore> store_;
  SystemService battery_;
  std::unique_ptr<SystemService> hostname_;  ///< where the firmware does not tell the chassis
  GCancellable* cancellable_;
  GDBusObjectManager* modems_ = nullptr;
};

}  // namespace vantorium::gtk
