#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace vantorium {

/// What `HTTPClient` tells the service about the device. Both are called on any thread.
struct ClientDevice {
  /// What kind of link leads to the internet at the moment, in the service's words; none where the platform
  /// has no reachability monitor.
  std::function<std::optional<std::string>()> connectionType;
  /// Device, application and user as a JSON object, for error reports.
  std::function<nlohmann::json(const std::string& appID, const std::string& userID)> description;
};

}  // namespace vantorium
