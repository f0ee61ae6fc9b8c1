// The C API of the GTK host.
#include <gtkmm.h>
#include <gtkmm/init.h>

#include <algorithm>
#include <atomic>
#include <cstring>

#include <vantorium/gtk.h>
#include <vantorium/gtk.hpp>
#include <vantorium/gtk_native_ads.hpp>

#include "bindings/c/call.hpp"
#include "hosts/gtk/host.hpp"

using namespace vantorium;
using namespace vantorium::c;

namespace {

/// The thread that made the first host, which is the toolkit's from then on.
std::atomic<GThread*> toolkitThread = nullptr;

/// The host, if it is one of GTK.
std::shared_ptr<Host> desktop(vantorium_host* host) {
  auto given = object(host, "host");
  if (dynamic_cast<gtk::DesktopHost*>(given.get()) == nullptr)
    refuse("\"host\" is no GTK host. Give one of vantorium_gtk_host_new.");
  return given;
}

/// The toolkit's own check of the class of a widget.
template <typename Instance>
Instance* checked(Instance* instance, GType type, const char* argument) {
  if (instance == nullptr) refuse(std::string("\"") + argument + "\" is null. Give a widget.");
  if (g_type_check_instance_is_a(reinterpret_cast<GTypeInstance*>(instance), type) == FALSE)
    refuse(std::string("\"") + argument + "\" is a widget of another class. Give a " + g_type_name(type) +
           ".");
  return instance;
}

gtk::NativeAdView& viewOf(GtkWidget* widget) {
  if (toolkitThread != g_thread_self())
    refuse("Widgets are of use on the main thread only. Call this there.");
  checked(widget, GTK_TYPE_BOX, "native_ad_view");
  auto* const view = dynamic_cast<gtk::NativeAdView*>(Glib::wrap(widget));
  if (view == nullptr)
    refuse("\"native_ad_view\" is a box of another kind. Give one of vantorium_gtk_native_ad_view_new.");
  return *view;
}

/// This thread is the toolkit's, if no other is.
void claimToolkit() {
  if (g_main_context_acquire(nullptr) == FALSE)
    refuse("Another thread runs GTK's main loop. Make the host in \"activate\", on that thread.");
  g_main_context_release(nullptr);
  GThread* first = nullptr;
  if (!toolkitThread.compare_exchange_strong(first, g_thread_self()) && first != g_thread_self())
    refuse("Another thread has made a host before. GTK is for one thread: make it there.");
  Gtk::init_gtkmm_internals();
}

gtk::HostOptions readOptions(const vantorium_gtk_host_options* options) {
  if (options == nullptr) refuse("\"options\" is null. Give the application's ID at least.");
  if (options->size < sizeof options->size)
    refuse("\"size\" of the options is not set. Set it to sizeof(vantorium_gtk_host_options).");
  vantorium_gtk_host_options known{};
  std::memcpy(&known, options, std::min(options->size, sizeof known));
  gtk::HostOptions read;
  read.applicationID = text(known.application_id, "application_id");
  read.applicationVersion = textIfAny(known.application_version, "application_version").value_or("");
  read.advertisingTrackingEnabled = known.advertising_tracking_enabled;
  if (const auto url = textIfAny(known.store_url, "store_url")) read.storeURL = *url;
  read.treatLoopbackAsOnline = known.treat_loopback_as_online;
  return read;
}

}  // namespace

vantorium_host* vantorium_gtk_host_new(const vantorium_gtk_host_options* options) {
  return call<vantorium_host*>(nullptr, [&] {
    auto read = readOptions(options);
    if (gtk_is_initialized() == FALSE) refuse("GTK is not initialised. Make the host in \"activate\".");
    claimToolkit();
    return giveHost(gtk::makeHost(std::move(read)));
  });
}

bool vantorium_gtk_attach(vantorium_host* host, GtkWindow* window) {
  return perform([&] {
    const auto given = desktop(host);
    gtk::attach(*given, *Glib::wrap(checked(window, GTK_TYPE_WINDOW, "window")));
  });
}

bool vantorium_gtk_set_device_orientation(vantorium_host* host,
                                          vantorium_gtk_device_orientation orientation) {
  return perform([&] {
    const auto given = desktop(host);
    if (orientation < VANTORIUM_GTK_DEVICE_UNKNOWN || orientation > VANTORIUM_GTK_DEVICE_FACE_DOWN)
      refuse("\"orientation\" names none. Give a VANTORIUM_GTK_DEVICE_… constant.");
    gtk::setDeviceOrientation(*given, static_cast<gtk::DeviceOrientation>(orientation));
  });
}

GtkWidget* vantorium_gtk_native_ad_view_new(vantorium_host* host, GtkOrientation orientation, int spacing) {
  return call<GtkWidget*>(nullptr, [&] {
    const auto given = desktop(host);
    auto* const view =
        Gtk::make_managed<gtk::NativeAdView>(*given, static_cast<Gtk::Orientation>(orientation), spacing);
    return static_cast<Gtk::Widget*>(view)->gobj();
  });
}

GtkWidget* vantorium_gtk_native_ad_view_from_box(vantorium_host* host, GtkBox* box, GtkBuilder* builder) {
  return call<GtkWidget*>(nullptr, [&] {
    const auto given = desktop(host);
    checked(box, GTK_TYPE_BOX, "box");
    checked(builder, GTK_TYPE_BUILDER, "builder");
    if (Glib::ObjectBase::_get_current_wrapper(G_OBJECT(box)) != nullptr)
      refuse("\"box\" is in use by gtkmm, or was turned into a native ad before. Give it once.");
    Gtk::manage(new gtk::NativeAdView(box, Glib::wrap(builder, true), *given));
    return GTK_WIDGET(box);
  });
}

bool vantorium_gtk_native_ad_view_connect(GtkWidget* native_ad_view, const char* outlet, GtkWidget* widget) {
  return perform([&] {
    auto& view = viewOf(native_ad_view);
    refuseIf(
        view.connectOutlet(text(outlet, "outlet"), *Glib::wrap(checked(widget, GTK_TYPE_WIDGET, "widget"))));
  });
}

vantorium_native_ad_view* vantorium_gtk_native_ad_view_get_view(GtkWidget* native_ad_view) {
  return call<vantorium_native_ad_view*>(
      nullptr, [&] { return giveToThisThread<vantorium_native_ad_view>(viewOf(native_ad_view).view()); });
}

vantorium_native_ad* vantorium_gtk_native_ad_view_get_ad(GtkWidget* native_ad_view) {
  return call<vantorium_native_ad*>(nullptr, [&] {
    return give<vantorium_native_ad>(viewOf(native_ad_view).nativeAd(), std::this_thread::get_id());
  });
}

bool vantorium_gtk_native_ad_view_play_video(GtkWidget* native_ad_view) {
  return perform([&] { viewOf(native_ad_view).playVideo(); });
}

bool vantorium_gtk_native_ad_view_pause_video(GtkWidget* native_ad_view) {
  return perform([&] { viewOf(native_ad_view).pauseVideo(); });
}

bool vantorium_gtk_native_ad_view_set_star_images(GtkWidget* native_ad_view, const char* empty_path,
                                                  const char* half_full_path, const char* full_path) {
  return perform([&] {
    viewOf(native_ad_view)
        .setStarImages(text(empty_path, "empty_path"), text(half_full_path, "half_full_path"),
                       text(full_path, "full_path"));
  });
}
