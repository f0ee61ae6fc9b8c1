#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/device_information.hpp"

namespace vantorium::gtk {

// What Linux says about the machine and its user. All read files or the environment at once; any thread,
// unless said otherwise.

/// VERSION_ID of the os-release file, empty when there is none.
std::string systemVersion(const std::filesystem::path& osRelease);

/// "Linux phone", "Linux tablet", "Linux laptop" or "Linux desktop", by a chassis name as systemd spells it.
std::string modelForChassis(const std::string& chassis);
/// The file in which the firmware tells its chassis type.
inline constexpr const char* firmwareChassis = "/sys/class/dmi/id/chassis_type";
/// The chassis by such a file, or empty.
std::string chassisFromFirmware(const std::filesystem::path& chassisType);

struct Battery {
  float level = -1;  ///< 0 to 1; -1 when unknown
  BatteryState state = BatteryState::unknown;
};
/// The system battery below a folder like /sys/class/power_supply.
Battery readBattery(const std::filesystem::path& powerSupplies);

/// Bytes free for this user on the file system of the documents folder.
std::optional<std::int64_t> freeSpace();

/// BCP 47 tags of the user's languages, best first. Reads the environment: at start only.
std::vector<std::string> preferredLanguages();
/// The locale for dates, as ICU names it. Reads the environment: at start only.
std::string dateLocale();
/// The identifier of the time zone. May look through the time zone database: at start only.
std::string timeZone();
/// The hardware's name, as `uname -m` tells it.
std::string machineName();

}  // namespace vantorium::gtk
