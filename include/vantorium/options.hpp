#pragma once

#include <map>
#include <optional>
#include <string>

#include <vantorium/export.h>

namespace vantorium {

/// The base of every option object, so that one operation can accept any of them. Option objects are plain
/// values filled by the application; do not change one on another thread while a call that received it is
/// running.
struct VANTORIUM_API VantoriumAdOptions {
  virtual ~VantoriumAdOptions() = default;
};

/// How native ads are precached.
struct VANTORIUM_API VantoriumNativeAdOptions : VantoriumAdOptions {
  /// Download the ads' icons, images and videos ahead. Without this they are loaded when they are shown.
  bool shouldDownloadAssets = true;
  /// How many ads to ask the service for. More than five is brought down to five, in this object too.
  int numberOfAdsToPrecache = 1;
  /// Sent to the service as it stands; the SDK does not interpret it.
  std::string creativeType = "both";
};

/// How a native ad's video behaves.
struct VANTORIUM_API VantoriumMediaViewOptions : VantoriumAdOptions {
  /// Start the video by itself once it is seen, and stop it when it is not. Without this the application
  /// plays it, with a control of its own: the view has none but for the sound.
  bool shouldAutoplayVideo = true;
  /// Start it again when it ends. The service hears of the end only of a video that loops.
  bool shouldLoopVideo = true;
  /// Start without sound.
  bool shouldMuteVideo = false;
};

/// The application's own parameters for one showing or one click; they travel with click reports.
struct VANTORIUM_API VantoriumServerParameter : VantoriumAdOptions {
  /// By key; none sends nothing.
  std::optional<std::map<std::string, std::string>> parameters;
};

}  // namespace vantorium
