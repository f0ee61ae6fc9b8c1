#include "hosts/gtk/device_services.hpp"

#include <array>
#include <utility>

#include "hosts/gtk/machine_facts.hpp"

namespace vantorium::gtk {

namespace {

enum class UPowerState : guint32 {
  charging = 1,
  discharging = 2,
  empty = 3,
  full = 4,
  waitsToCharge = 5,
  waits = 6
};
constexpr guint32 upowerTypeBattery = 2;

BatteryState fromUPower(guint32 state) {
  switch (static_cast<UPowerState>(state)) {
    case UPowerState::charging:
      return BatteryState::charging;
    case UPowerState::full:
      return BatteryState::full;
    case UPowerState::discharging:
    case UPowerState::empty:
    case UPowerState::waitsToCharge:
    case UPowerState::waits:
      return BatteryState::unplugged;
    default:
      return BatteryState::unknown;
  }
}

GVariant* modemProperty(GDBusObject* modem, const char* interface, const char* name) {
  GDBusInterface* const proxy = g_dbus_object_get_interface(modem, interface);
  if (proxy == nullptr) return nullptr;
  GVariant* const value = g_dbus_proxy_get_cached_property(G_DBUS_PROXY(proxy), name);
  g_object_unref(proxy);
  return value;
}

std::optional<std::string> carrierOf(GDBusObject* modem) {
  GVariant* const value =
      modemProperty(modem, "org.freedesktop.ModemManager1.Modem.Modem3gpp", "OperatorName");
  if (value == nullptr) return std::nullopt;
  const std::string name =
      g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) ? g_variant_get_string(value, nullptr) : "";
  g_variant_unref(value);
  return name.empty() ? std::nullopt : std::optional(name);
}

std::uint32_t technologiesOf(GDBusObject* modem) {
  GVariant* const value = modemProperty(modem, "org.freedesktop.ModemManager1.Modem", "AccessTechnologies");
  if (value == nullptr) return 0;
  const bool isNumber = g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32);
  const std::uint32_t technologies = isNumber ? g_variant_get_uint32(value) : 0;
  g_variant_unref(value);
  return technologies;
}

}  // namespace

std::optional<std::string> radioTechnologyName(std::uint32_t technologies) {
  // ModemManager's bits, the fastest first.
  static constexpr std::array<std::pair<int, const char*>, 15> names{{{15, "NR"},
                                                                      {14, "LTE"},
                                                                      {9, "HSDPA"},
                                                                      {8, "HSDPA"},
                                                                      {7, "HSUPA"},
                                                                      {6, "HSDPA"},
                                                                      {5, "WCDMA"},
                                                                      {13, "CDMAEVDORevB"},
                                                                      {12, "CDMAEVDORevA"},
                                                                      {11, "CDMAEVDORev0"},
                                                                      {10, "CDMA1x"},
                                                                      {4, "Edge"},
                                                                      {3, "GPRS"},
                                                                      {2, "GPRS"},
                                                                      {1, "GPRS"}}};
  for (const auto& [bit, name] : names) {
    if ((technologies >> bit & 1U) != 0) return name;
  }
  return std::nullopt;
}

DeviceServices::DeviceServices(std::shared_ptr<FactStore> store)
    : store_(std::move(store)),
      battery_("org.freedesktop.UPower", "/org/freedesktop/UPower/devices/DisplayDevice",
               "org.freedesktop.UPower.Device", [this] { updateBattery(); }),
      cancellable_(g_cancellable_new()) {
  if (chassisFromFirmware(firmwareChassis).empty()) {
    hostname_ = std::make_unique<SystemService>(
        "org.freedesktop.hostname1", "/org/freedesktop/hostname1", "org.freedesktop.hostname1",
        [this] { updateChassis(); }, SystemService::Start::onDemand);
  }
  g_dbus_object_manager_client_new_for_bus(
      G_BUS_TYPE_SYSTEM, G_DBUS_OBJECT_MANAGER_CLIENT_FLAGS_DO_NOT_AUTO_START,
      "org.freedesktop.ModemManager1", "/org/freedesktop/ModemManager1", nullptr, nullptr, nullptr,
      cancellable_,
      [](GObject*, GAsyncResult* result, gpointer self) {
        GError* error = nullptr;
        GDBusObjectManager* const modems = g_dbus_object_manager_client_new_for_bus_finish(result, &error);
        // Cancelled means that this object is gone; any other error, that there is no system bus.
        if (modems != nullptr) static_cast<DeviceServices*>(self)->connectModems(modems);
        g_clear_error(&error);
      },
      this);
}

DeviceServices::~DeviceServices() {
  g_cancellable_cancel(cancellable_);
  g_object_unref(cancellable_);
  if (modems_ == nullptr) return;
  g_signal_handlers_disconnect_by_data(modems_, this);
  g_object_unref(modems_);
}

void DeviceServices::updateBattery() {
  store_->setBatteryTold(battery_.isRunning());
  const bool exists = battery_.property<bool>("IsPresent").value_or(false) &&
                      battery_.property<guint32>("Type").value_or(0) == upowerTypeBattery;
  if (!exists) return;
  const double percentage = battery_.property<double>("Percentage").value_or(-100);
  const auto state = fromUPower(battery_.property<guint32>("State").value_or(0));
  store_->update([&](DeviceFacts& facts) {
    facts.batteryLevel = static_cast<float>(percentage / 100);
    facts.batteryState = state;
  });
}

void DeviceServices::updateChassis() {
  const auto chassis = hostname_->property<Glib::ustring>("Chassis");
  if (!chassis || chassis->empty()) return;
  store_->update([model = modelForChassis(*chassis)](DeviceFacts& facts) { facts.model = model; });
}

void DeviceServices::connectModems(GDBusObjectManager* modems) {
  modems_ = modems;
  for (const char* signal : {"object-added", "object-removed", "interface-added", "interface-removed",
                             "interface-proxy-properties-changed", "notify::name-owner"}) {
    g_signal_connect_swapped(modems_, signal, G_CALLBACK(+[](DeviceServices* self) { self->updateModems(); }),
                             this);
  }
  updateModems();
}

void DeviceServices::updateModems() {
  std::optional<std::string> carrier;
  std::uint32_t technologies = 0;
  GList* const modems = g_dbus_object_manager_get_objects(modems_);
  for (const GList* each = modems; each != nullptr; each = each->next) {
    auto* const modem = static_cast<GDBusObject*>(each->data);
    if (!carrier) carrier = carrierOf(modem);
    technologies |= technologiesOf(modem);
  }
  g_list_free_full(modems, g_object_unref);
  store_->update([&](DeviceFacts& facts) { facts.carrier = carrier; });
  store_->setRadioTechnology(radioTechnologyName(technologies));
}

}  // namespace vantorium::gtk
