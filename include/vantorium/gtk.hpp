#pragma once

#include <memory>
#include <string>

#include <vantorium/export.h>

namespace Gtk {
class Window;
}

namespace vantorium {

class Host;

/// The GTK 4 host: brings the SDK to an application written with gtkmm 4. Everything here is for the main
/// thread.
///
///     const auto host = vantorium::gtk::makeHost({.applicationID = "org.example.Game"});
///     Vantorium::setHost(host);
///     vantorium::gtk::attach(*host, window);
namespace gtk {

/// What the application tells its host about itself.
struct HostOptions {
  /// Reverse-domain name of the application: names its folders for caches and preferences, and is told to the
  /// service. A second process of the same name and user empties the cache of the first, whose ads then fail
  /// to show until they are precached again.
  std::string applicationID{};
  /// Told to the service when not empty.
  std::string applicationVersion{};
  /// Whether the user agreed to be recognised by advertisers. Off, no advertising identifier is made or sent.
  /// On, a random one is made at first use and kept, readable by this user only, with the application's
  /// preferences.
  bool advertisingTrackingEnabled = false;
  /// The store's page of a product; "{id}" stands for the product's identifier, percent-encoded.
  std::string storeURL = "appstream://{id}";
  /// For developers: treats this machine as online although it has no way to the internet, so that an ad
  /// service on the same machine can be used.
  bool treatLoopbackAsOnline = false;
};

/// Makes the host. GTK must be initialised (inside or after `Gtk::Application::create`). Callbacks to the
/// application run in the default main context, so they need its main loop running. Keep the host for the
/// life of the process.
VANTORIUM_API std::shared_ptr<Host> makeHost(HostOptions options);

/// Lets ads be shown in `window`, covering its content but not its title bar. Call it once, before the window
/// is shown. From then on the window's child is a `Gtk::Overlay` that holds the application's own content,
/// also after a later `set_child`. While an ad is shown the content takes no input; focus returns to where it
/// was.
///
/// Ads appear in the active one of the attached windows, else in the latest attached that is visible. The
/// window may be destroyed at any time; an ad in it then ends with it.
VANTORIUM_API void attach(Host& host, Gtk::Window& window);

/// How the device is held, seen from its user: landscape left means that its top points to the left.
enum class DeviceOrientation {
  unknown,
  portrait,
  portraitUpsideDown,
  landscapeLeft,
  landscapeRight,
  faceUp,
  faceDown
};

/// For developers: holds the device this way, whatever its sensor says, and tells ads to follow. The window
/// is taken to be upright in a device held in portrait when it is taller than wide, else in one whose top
/// points to the right: an ad is turned by what the device is turned from there.
VANTORIUM_API void setDeviceOrientation(Host& host, DeviceOrientation orientation);

}  // namespace gtk
}  // namespace vantorium
