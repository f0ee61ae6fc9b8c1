#include "hosts/gtk/device_information.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <system_error>

#include "hosts/gtk/machine_facts.hpp"
#include "platform/foundation/file_descriptor.hpp"
#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"
#include "platform/foundation/worker_pool.hpp"

namespace vantorium::gtk {

namespace fs = std::filesystem;

namespace {

constexpr const char* powerSupplies = "/sys/class/power_supply";
constexpr std::size_t uuidLength = 36;

DeviceFacts factsAtStart(const HostOptions& options, const fs::path& preferences) {
  DeviceFacts facts;
  facts.systemVersion = systemVersion("/etc/os-release");
  if (facts.systemVersion.empty()) facts.systemVersion = systemVersion("/usr/lib/os-release");
  facts.model = modelForChassis(chassisFromFirmware(firmwareChassis));
  facts.machine = machineName();
  facts.timezone = timeZone();
  facts.languages = preferredLanguages();
  facts.locale = dateLocale();
  facts.freeSpace = freeSpace();
  const Battery battery = readBattery(powerSupplies);
  facts.batteryLevel = battery.level;
  facts.batteryState = battery.state;
  if (!options.applicationID.empty()) facts.bundleIdentifier = options.applicationID;
  if (!options.applicationVersion.empty()) facts.appVersion = options.applicationVersion;
  if (options.advertisingTrackingEnabled) {
    facts.advertisingIdentifier = advertisingIdentifier(preferences / "advertising-identifier");
    facts.trackingEnabled = facts.advertisingIdentifier.has_value();
  }
  constexpr const char* simulated = "SIMULATOR_MODEL_IDENTIFIER";
  if (const char* const value = std::getenv(simulated)) facts.environment[simulated] = value;
  return facts;
}

std::optional<std::string> readIdentifier(const fs::path& file) {
  std::optional<Error> error;
  auto text = readTextFile(file, error);
  return text && text->size() == uuidLength ? text : std::nullopt;
}

}  // namespace

std::optional<std::string> advertisingIdentifier(const fs::path& file) {
  if (auto known = readIdentifier(file)) return known;
  const std::string fresh = makeUUID();
  createDirectoryIfNeeded(file.parent_path());
  const fs::path draft = file.string() + "." + fresh;
  {
    const FileDescriptor written(::open(draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!written.isOpen()) return std::nullopt;
    const bool whole =
        ::write(written.get(), fresh.data(), fresh.size()) == static_cast<ssize_t>(fresh.size());
    if (!whole || ::fsync(written.get()) != 0) {
      ::unlink(draft.c_str());
      return std::nullopt;
    }
  }
  // Fails when another process of the application was first: then its identifier holds. What is there but is
  // no identifier is replaced.
  std::error_code error;
  if (fs::exists(file, error) && !readIdentifier(file)) {
    fs::rename(draft, file, error);
  } else {
    fs::create_hard_link(draft, file, error);
    ::unlink(draft.c_str());
  }
  return readIdentifier(file);
}

LinuxDevice::LinuxDevice(const HostOptions& options, const fs::path& preferences)
    : store_(std::make_shared<FactStore>(factsAtStart(options, preferences))),
      services_(store_),
      volume_(store_) {
  watchMonitors();
}

void LinuxDevice::watchMonitors() {
  const auto display = Gdk::Display::get_default();
  if (!display) return;
  monitors_ = display->get_monitors();
  const auto update = [store = store_, monitors = monitors_.get()] {
    const auto monitor = std::dynamic_pointer_cast<Gdk::Monitor>(monitors->get_object(0));
    if (!monitor) return;
    Gdk::Rectangle area;
    monitor->get_geometry(area);
    store->update([&](DeviceFacts& facts) {
      facts.screenWidth = area.get_width();
      facts.screenHeight = area.get_height();
    });
  };
  update();
  monitors_->signal_items_changed().connect([update](guint, guint, guint) { update(); });
}

DeviceFacts LinuxDevice::facts() const {
  refresh();
  return store_->facts();
}

// What is read here may wait for a slow disk or firmware: it is for whoever asks next.
void LinuxDevice::refresh() const {
  if (isRefreshing_->exchange(true)) return;
  workers::async([store = store_, isRefreshing = isRefreshing_] {
    const auto space = freeSpace();
    const std::optional<Battery> battery =
        store->isBatteryTold() ? std::nullopt : std::optional(readBattery(powerSupplies));
    store->update([&](DeviceFacts& facts) {
      facts.freeSpace = space;
      if (!battery) return;
      facts.batteryLevel = battery->level;
      facts.batteryState = battery->state;
    });
    *isRefreshing = false;
  });
}

bool LinuxDevice::fileExists(const std::string& path) const { return ::access(path.c_str(), F_OK) == 0; }

bool LinuxDevice::createFile(const std::string& path) {
  return FileDescriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)).isOpen();
}

std::function<std::optional<std::string>()> LinuxDevice::radioTechnology() const {
  return [store = store_] { return store->radioTechnology(); };
}

}  // namespace vantorium::gtk
