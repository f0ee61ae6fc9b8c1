#pragma once

#include <memory>
#include <string>

#include "platform/host.hpp"
#include "platform/net/reachability_probe.hpp"

namespace vantorium {

/// Whether, and over what kind of link, the network can be reached. Every answer is read afresh. Any thread.
class VantoriumReachability {
 public:
  enum class NetworkStatus { notReachable, reachableViaWiFi, reachableViaWWAN };
  static std::string description(NetworkStatus status);

  /// Null where the platform offers no probe.
  static std::shared_ptr<VantoriumReachability> make(Host& host);
  /// `probe` must not be null.
  explicit VantoriumReachability(std::unique_ptr<ReachabilityProbe> probe);

  bool isReachable() const;
  bool isReachableViaWiFi() const;
  NetworkStatus currentReachabilityStatus() const;
  /// What the service is told as "connectionType".
  std::string currentReachabilityTechnologyString() const;

 private:
  bool isConnectionRequiredAndTransientFlagSet() const;

  const std::unique_ptr<ReachabilityProbe> probe_;
};

}  // namespace vantorium
