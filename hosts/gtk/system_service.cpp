#include "hosts/gtk/system_service.hpp"

#include <utility>

namespace vantorium::gtk {

SystemService::SystemService(const char* name, const char* path, const char* interface,
                             std::function<void()> changed, Start start)
    : changed_(std::move(changed)) {
  const auto isCancelled = [cancellable = cancellable_] { return cancellable->is_cancelled(); };
  Gio::DBus::Proxy::create_for_bus(
      Gio::DBus::BusType::SYSTEM, name, path, interface,
      [this, isCancelled](const Glib::RefPtr<Gio::AsyncResult>& result) {
        if (!isCancelled()) connected(result);
      },
      cancellable_, {},
      start == Start::never ? Gio::DBus::ProxyFlags::DO_NOT_AUTO_START : Gio::DBus::ProxyFlags::NONE);
}

SystemService::~SystemService() {
  cancellable_->cancel();
  for (auto& connection : connections_) connection.disconnect();
}

void SystemService::connected(const Glib::RefPtr<Gio::AsyncResult>& result) {
  try {
    proxy_ = Gio::DBus::Proxy::create_for_bus_finish(result);
  } catch (const Glib::Error&) {
    return;  // there is no system bus
  }
  connections_.push_back(
      proxy_->signal_properties_changed().connect([this](const auto&, const auto&) { changed_(); }));
  connections_.push_back(proxy_->property_g_name_owner().signal_changed().connect([this] { changed_(); }));
  changed_();
}

void SystemService::call(const char* method) {
  if (!isRunning()) return;
  proxy_->call(method, [proxy = proxy_](const Glib::RefPtr<Gio::AsyncResult>& result) {
    try {
      proxy->call_finish(result);
    } catch (const Glib::Error&) {
      // The service refuses, or went away: its properties tell.
    }
  });
}

}  // namespace vantorium::gtk
