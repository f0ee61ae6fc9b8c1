#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include <vantorium/parameters.hpp>

#include "device/user_defaults.hpp"
#include "platform/host.hpp"

namespace vantorium {

/// Tells the service who is asking: application, user and device.
class InitRequestBuilder {
 public:
  /// A JSON object; a fact that is not known leaves its key out. Any thread; reads the settings file.
  static nlohmann::json requestBody(Host& host, const UserDefaults& defaults, const std::string& appID,
                                    const std::string& userID, const std::optional<Parameters>& parameters);
};

/// The hardware identifier, or the model that a simulator pretends to be.
std::string hardware(const DeviceFacts& facts);
/// Whether the device seems to be under its owner's full control. May create an empty file in trying.
bool isJailbroken(DeviceInformation& device);
std::string batteryStateString(BatteryState state);
/// Bytes, where known.
std::optional<std::int64_t> remainingFreeSpace(const DeviceFacts& facts);

}  // namespace vantorium
