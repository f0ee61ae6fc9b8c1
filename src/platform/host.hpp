#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <vantorium/dispatch_queue.hpp>
#include <vantorium/export.h>

#include "platform/av/media_player.hpp"
#include "platform/foundation/clock.hpp"
#include "platform/foundation/device_information.hpp"
#include "platform/net/reachability_probe.hpp"
#include "platform/ui/application.hpp"
#include "platform/ui/store_product_view_controller.hpp"
#include "platform/web/web_engine.hpp"

namespace vantorium {

/// Everything the SDK asks of the machine and the application it lives in. To bring the SDK to another
/// toolkit, implement this class and the ports it hands out; the library decides, a host only does.
///
/// One host serves one SDK and outlives it. Calls may come on any thread unless a port says otherwise.
class VANTORIUM_HOST_API Host {
 public:
  virtual ~Host() = default;

  /// The queue of the main thread, on which screens, views and the delegate live.
  virtual std::shared_ptr<DispatchQueue> mainQueue() = 0;
  virtual Clock& clock() = 0;
  virtual DeviceInformation& device() = 0;
  virtual Directories directories() const = 0;
  /// Null when the platform offers none.
  virtual std::unique_ptr<ReachabilityProbe> makeReachabilityProbe() = 0;
  /// Writes one line (given without its end) to where the host's users look; not to standard output, which is
  /// the application's.
  virtual void print(std::string_view line) = 0;
  /// Asks the platform to let the application work on while it moves to the background, for as long as the
  /// token lives. Null where the platform does not stop applications.
  virtual std::shared_ptr<void> beginBackgroundTask() { return nullptr; }

  /// The rest is for the main thread.
  virtual ui::Application& application() = 0;
  virtual WebEngineGeneration webEngineGeneration() const = 0;
  virtual std::shared_ptr<WebEngine> makeWebEngine() = 0;
  /// A player for what is at `source`: the absolute path of a file, or an http or https address. What cannot
  /// be played gives a player that fails.
  virtual std::shared_ptr<MediaPlayer> makePlayer(const std::string& source) = 0;
  virtual std::shared_ptr<ui::StoreProductViewController> makeStoreProductViewController() = 0;
};

}  // namespace vantorium
