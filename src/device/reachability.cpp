#include "device/reachability.hpp"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace vantorium {

namespace {

namespace bits = reachability_flags;

bool isSet(std::uint32_t flags, std::uint32_t bit) { return (flags & bit) != 0; }

struct Generation {
  std::string_view radio;
  std::string_view name;
};
constexpr std::array generations{
    Generation{"GPRS", "2G"},         Generation{"Edge", "2G"},         Generation{"CDMA1x", "2G"},
    Generation{"WCDMA", "3G"},        Generation{"HSDPA", "3G"},        Generation{"HSUPA", "3G"},
    Generation{"CDMAEVDORev0", "3G"}, Generation{"CDMAEVDORevA", "3G"}, Generation{"CDMAEVDORevB", "3G"},
    Generation{"eHRPD", "3G"},        Generation{"LTE", "4G"},
};

}  // namespace

std::string VantoriumReachability::description(NetworkStatus status) {
  switch (status) {
    case NetworkStatus::reachableViaWiFi:
      return "WiFi";
    case NetworkStatus::reachableViaWWAN:
      return "Cellular";
    case NetworkStatus::notReachable:
      break;
  }
  return "No Connection";
}

std::shared_ptr<VantoriumReachability> VantoriumReachability::make(Host& host) {
  auto probe = host.makeReachabilityProbe();
  return probe ? std::make_shared<VantoriumReachability>(std::move(probe)) : nullptr;
}

VantoriumReachability::VantoriumReachability(std::unique_ptr<ReachabilityProbe> probe)
    : probe_(std::move(probe)) {}

bool VantoriumReachability::isConnectionRequiredAndTransientFlagSet() const {
  const std::uint32_t flags = probe_->flags().value_or(0);
  return isSet(flags, bits::connectionRequired) && isSet(flags, bits::transientConnection);
}

bool VantoriumReachability::isReachable() const {
  const auto flags = probe_->flags();
  if (!flags || !isSet(*flags, bits::reachable) || isConnectionRequiredAndTransientFlagSet()) return false;
  if (!probe_->isRunningOnDevice() || probe_->reachableOnWWAN()) return true;
  const auto again = probe_->flags();
  return !again || !isSet(*again, bits::isWWAN);
}

bool VantoriumReachability::isReachableViaWiFi() const {
  const auto flags = probe_->flags();
  if (!flags || !isSet(*flags, bits::reachable)) return false;
  if (!probe_->isRunningOnDevice()) return true;
  const auto again = probe_->flags();
  return !again || !isSet(*again, bits::isWWAN);
}

VantoriumReachability::NetworkStatus VantoriumReachability::currentReachabilityStatus() const {
  if (!isReachable()) return NetworkStatus::notReachable;
  if (isReachableViaWiFi()) return NetworkStatus::reachableViaWiFi;
  return probe_->isRunningOnDevice() ? NetworkStatus::reachableViaWWAN : NetworkStatus::notReachable;
}

std::string VantoriumReachability::currentReachabilityTechnologyString() const {
  if (!isReachable()) return "None";
  if (isReachableViaWiFi()) return "WIFI";
  if (!probe_->isRunningOnDevice()) return "None";
  const auto radio = probe_->radioAccessTechnology();
  const auto* found = std::ranges::find_if(
      generations, [&](const Generation& generation) { return radio == generation.radio; });
  return found != generations.end() ? std::string(found->name) : description(currentReachabilityStatus());
}

std::shared_ptr<void> VantoriumReachability::observeOnline(std::function<void()> didComeOnline) const {
  auto token = online_.add(std::move(didComeOnline));
  bool wasWatching = false;
  {
    const MutexLock lock(mutex_);
    wasWatching = std::exchange(isWatching_, true);
  }
  if (!wasWatching) {
    probe_->setChangeHandler([weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->flagsMayHaveChanged();
    });
    updateOnline();
  }
  return token;
}

void VantoriumReachability::flagsMayHaveChanged() const {
  if (updateOnline()) online_.call();
}

/// Looks again; whether the device was offline before and is online now.
bool VantoriumReachability::updateOnline() const {
  const std::uint64_t look = ++looks_;
  const bool isOnline = currentReachabilityStatus() != NetworkStatus::notReachable;
  const MutexLock lock(mutex_);
  if (look < lastLook_) return false;  // a later one was quicker
  lastLook_ = look;
  return !std::exchange(isOnline_, isOnline).value_or(true) && isOnline;
}

}  // namespace vantorium
