#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <vantorium/export.h>

namespace vantorium {

enum class BatteryState { unknown, unplugged, charging, full };

/// What the SDK's own bundle states about it.
struct SdkBundle {
  using Value = std::variant<std::string, std::int64_t, double, bool>;
  std::optional<Value> shortVersion;  ///< as stored; absent when the bundle lacks the key
};

/// The facts of one moment about device, application and user that the service is told. A fact that is not
/// known is absent; those without an optional have a stated default.
struct DeviceFacts {
  std::string systemVersion;     ///< of the operating system, for example "12"
  std::string model;             ///< family name, for example "Linux phone"; also the "User-Agent"
  std::string machine;           ///< hardware identifier, as `uname -m` tells it
  double screenWidth = 0;        ///< points
  double screenHeight = 0;       ///< points
  std::string timezone = "UTC";  ///< identifier, for example "Europe/Vienna"
  float volume = 1;              ///< output volume, 0 to 1
  float batteryLevel = -1;       ///< 0 to 1; -1 when unknown
  BatteryState batteryState = BatteryState::unknown;
  std::vector<std::string> languages;  ///< preferred languages, best first, for example "de-AT"
  std::string locale = "en_US";        ///< for date formats
  std::optional<std::string> carrier;  ///< name of the cellular provider
  bool trackingEnabled = false;        ///< whether the user's advertising identifier may be read
  std::optional<std::string> advertisingIdentifier;  ///< UUID text
  std::optional<std::int64_t> freeSpace;             ///< bytes free on the documents' file system
  std::optional<std::string> bundleIdentifier;       ///< of the host application
  std::optional<std::string> appVersion;             ///< of the host application
  std::optional<SdkBundle> sdkBundle;                ///< absent where the SDK is not installed as a bundle
  std::map<std::string, std::string> environment;    ///< variables the SDK asks for
};

/// Answers what the SDK asks about the device. Every call may come on any thread, answers at once from what
/// is known (never waits for another process) and does not fail.
class VANTORIUM_HOST_API DeviceInformation {
 public:
  virtual ~DeviceInformation() = default;

  virtual DeviceFacts facts() const = 0;
  /// Whether something exists at this absolute path.
  virtual bool fileExists(const std::string& path) const = 0;
  /// Tries to create an empty file at this absolute path; whether it could.
  virtual bool createFile(const std::string& path) = 0;
};

/// Where the SDK keeps things for this application. Fixed for the life of the host; created by the SDK on
/// demand.
struct Directories {
  std::filesystem::path caches;       ///< per user and application; may be emptied by anyone at any time
  std::filesystem::path preferences;  ///< per user and application; survives
};

}  // namespace vantorium
