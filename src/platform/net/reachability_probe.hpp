#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <vantorium/export.h>

namespace vantorium {

/// What the platform says about the way to the internet: a set of flag bits.
namespace reachability_flags {
inline constexpr std::uint32_t transientConnection = 1U << 0;
inline constexpr std::uint32_t reachable = 1U << 1;
inline constexpr std::uint32_t connectionRequired = 1U << 2;
inline constexpr std::uint32_t isWWAN = 1U << 18;
}  // namespace reachability_flags

/// A probe of general internet connectivity. Every call may come on any thread and reads afresh, without
/// waiting for the network.
class VANTORIUM_HOST_API ReachabilityProbe {
 public:
  virtual ~ReachabilityProbe() = default;

  /// The flags of this moment; none when they cannot be read.
  virtual std::optional<std::uint32_t> flags() = 0;
  /// The radio technology in use, one of GPRS, Edge, CDMA1x, WCDMA, HSDPA, HSUPA, CDMAEVDORev0, CDMAEVDORevA,
  /// CDMAEVDORevB, eHRPD, LTE, or another text; none when unknown.
  virtual std::optional<std::string> radioAccessTechnology() = 0;
  /// When false, a cellular link counts as unreachable.
  virtual bool reachableOnWWAN() const { return true; }
  /// False in a simulator, where cellular links do not exist.
  virtual bool isRunningOnDevice() const { return true; }

  /// From now on `handler` is called on the host's main queue whenever the flags may have changed, seldom
  /// more than once for each change; it takes the place of the one before. The probe's end is its end: a
  /// probe that goes on the main thread calls no more. Not to be called by two threads at once. A platform
  /// that does not tell keeps this: nothing is ever called.
  virtual void setChangeHandler(std::function<void()> /*handler*/) {}
};

}  // namespace vantorium
