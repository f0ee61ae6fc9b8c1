#include "hosts/gtk/host.hpp"

#include <utility>

#include "hosts/gtk/media_player.hpp"
#include "hosts/gtk/reachability_probe.hpp"
#include "platform/foundation/console.hpp"

namespace vantorium::gtk {

namespace fs = std::filesystem;

namespace {

Directories directoriesOf(const HostOptions& options) {
  const std::string name = options.applicationID.empty() ? "vantorium" : options.applicationID;
  return {fs::path(g_get_user_cache_dir()) / name, fs::path(g_get_user_config_dir()) / name};
}

}  // namespace

DesktopHost::DesktopHost(HostOptions options)
    : options_(std::move(options)),
      directories_(directoriesOf(options_)),
      device_(options_, directories_.preferences),
      application_(options_.storeURL, printToConsole) {}

std::unique_ptr<ReachabilityProbe> DesktopHost::makeReachabilityProbe() {
  return std::make_unique<RouteProbe>(device_.radioTechnology(), options_.treatLoopbackAsOnline);
}

void DesktopHost::print(std::string_view line) { printToConsole(line); }

std::shared_ptr<WebEngine> DesktopHost::makeWebEngine() {
  if (!web_) web_ = std::make_shared<WebContext>(directories_.caches / "page-filters", mainQueue_);
  return std::make_shared<WebKitEngine>(web_);
}

std::shared_ptr<MediaPlayer> DesktopHost::makePlayer(const std::string& source) {
  return std::make_shared<StreamPlayer>(source, clock_);
}

std::shared_ptr<ui::StoreProductViewController> DesktopHost::makeStoreProductViewController() {
  return std::make_shared<ui::StoreProductViewController>(application_);
}

namespace {

/// The host as what it is; null, with a word on the console, when it is of another kind.
DesktopHost* desktop(Host& host) {
  auto* const own = dynamic_cast<DesktopHost*>(&host);
  if (own == nullptr) g_critical("vantorium: this needs the host that vantorium::gtk::makeHost gives.");
  return own;
}

}  // namespace

std::shared_ptr<Host> makeHost(HostOptions options) {
  return std::make_shared<DesktopHost>(std::move(options));
}

void attach(Host& host, Gtk::Window& window) {
  if (auto* const own = desktop(host)) own->application().attach(window);
}

static_assert(static_cast<int>(DeviceOrientation::faceDown) ==
                  static_cast<int>(ui::DeviceOrientation::faceDown),
              "the public names number the readings as the port does");

void setDeviceOrientation(Host& host, DeviceOrientation orientation) {
  if (auto* const own = desktop(host))
    own->application().holdDevice(static_cast<ui::DeviceOrientation>(orientation));
}

}  // namespace vantorium::gtk
