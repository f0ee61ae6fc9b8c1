#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <vantorium/error.hpp>
#include <vantorium/export.h>

namespace vantorium {

/// The methods a delegate may answer, named as in `VantoriumDelegate`.
enum class DelegateMethod {
  didReceiveReward,
  didPrecache,
  didFailPrecache,
  didReceiveClick,
  didConfigure,
  didFailConfigure,
};

/// What the application hears of the SDK. Every method is optional, does nothing unless overridden and is
/// called on the main queue. The SDK holds the delegate weakly: once the application has released it, calls
/// silently stop.
class VANTORIUM_API VantoriumDelegate {
 public:
  virtual ~VantoriumDelegate() = default;

  /// Asked before every call; answering false skips it. Called on any thread.
  virtual bool respondsTo(DelegateMethod) const { return true; }

  /// The service granted the reward of a rewarded ad; it comes once per ad.
  virtual void didReceiveReward(const std::string& /*placement*/, std::int64_t /*amount*/) {}
  /// A campaign of the placement is on disk and can be shown.
  virtual void didPrecache(const std::string& /*placement*/) {}
  /// Precaching for the placement failed or was refused.
  virtual void didFailPrecache(const std::string& /*placement*/, const std::optional<Error>& /*error*/) {}
  /// The ad shown for the placement was clicked.
  virtual void didReceiveClick(const std::string& /*placement*/) {}
  /// The SDK is configured.
  virtual void didConfigure() {}
  /// Configuring failed or was refused; `configure` may be called again.
  virtual void didFailConfigure(const std::optional<Error>& /*error*/) {}
};

}  // namespace vantorium
