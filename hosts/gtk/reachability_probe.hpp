#pragma once

#include <functional>
#include <memory>
#include <string>

#include "hosts/gtk/route_watch.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "platform/net/reachability_probe.hpp"

namespace vantorium::gtk {

/// The kernel's routes (netlink): online while a default route leads through a link that is up.
class RouteProbe final : public ReachabilityProbe {
 public:
  /// `radioTechnology` answers, on any thread, what the modem uses. With `loopbackIsEnough`, a machine
  /// without a way out counts as online too.
  RouteProbe(std::function<std::optional<std::string>()> radioTechnology, bool loopbackIsEnough)
      : radioTechnology_(std::move(radioTechnology)), loopbackIsEnough_(loopbackIsEnough) {}

  std::optional<std::uint32_t> flags() override;
  std::optional<std::string> radioAccessTechnology() override { return radioTechnology_(); }
  void setChangeHandler(std::function<void()> handler) override EXCLUDES(mutex_);

 private:
  /// Watches the routes for the handler, unless it does: the system may have had no descriptor before.
  void watch() EXCLUDES(mutex_);

  std::function<std::optional<std::string>()> radioTechnology_;
  bool loopbackIsEnough_;
  Mutex mutex_;
  std::function<void()> handler_ GUARDED_BY(mutex_);
  std::unique_ptr<RouteWatch> watch_ GUARDED_BY(mutex_);
};

}  // namespace vantorium::gtk
