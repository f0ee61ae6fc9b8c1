#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/observers.hpp"
#include "platform/host.hpp"
#include "platform/net/reachability_probe.hpp"

namespace vantorium {

/// Whether, and over what kind of link, the network can be reached. Every answer is read afresh. Held by
/// `std::shared_ptr`. Any thread.
class VantoriumReachability : public std::enable_shared_from_this<VantoriumReachability> {
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

  /// Calls `didComeOnline` on the main queue each time the device goes from not reachable to reachable, as
  /// long as the returned token is kept: dropped on the main thread, nothing is called after that. Nothing is
  /// ever called where the platform does not tell of changes.
  [[nodiscard]] std::shared_ptr<void> observeOnline(std::function<void()> didComeOnline) const
      EXCLUDES(mutex_);

 private:
  void flagsMayHaveChanged() const EXCLUDES(mutex_);
  bool updateOnline() const EXCLUDES(mutex_);
  bool isConnectionRequiredAndTransientFlagSet() const;

  const std::unique_ptr<ReachabilityProbe> probe_;
  mutable Observers online_;
  mutable Mutex mutex_;
  mutable bool isWatching_ GUARDED_BY(mutex_) = false;
  mutable std::atomic<std::uint64_t> looks_ = 0;
  mutable std::uint64_t lastLook_ GUARDED_BY(mutex_) = 0;  ///< the number of the one below
  mutable std::optional<bool> isOnline_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
