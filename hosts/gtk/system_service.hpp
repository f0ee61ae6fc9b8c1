#pragma once

#include <gtkmm.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vantorium::gtk {

/// One object of a service on the system bus, as far as it is known here: its properties are kept up to date
/// without ever waiting for it, and are unknown while it does not run. Main thread only.
class SystemService {
 public:
  enum class Start { never, onDemand };
  /// Calls `changed` whenever a property may have changed, or the service came or went.
  SystemService(const char* name, const char* path, const char* interface, std::function<void()> changed,
                Start start = Start::never);
  ~SystemService();
  SystemService(const SystemService&) = delete;
  SystemService& operator=(const SystemService&) = delete;

  bool isRunning() const { return proxy_ && !proxy_->get_name_owner().empty(); }

  /// None when unknown or of another type.
  template <typename T>
  std::optional<T> property(const char* name) const {
    if (!isRunning()) return std::nullopt;
    Glib::VariantBase value;
    proxy_->get_cached_property(value, name);
    if (!value || !value.is_of_type(Glib::Variant<T>::variant_type())) return std::nullopt;
    return Glib::VariantBase::cast_dynamic<Glib::Variant<T>>(value).get();
  }

  /// Calls a method without arguments and forgets about it.
  void call(const char* method);

 private:
  void connected(const Glib::RefPtr<Gio::AsyncResult>& result);

  std::function<void()> changed_;
  Glib::RefPtr<Gio::Cancellable> cancellable_ = Gio::Cancellable::create();
  Glib::RefPtr<Gio::DBus::Proxy> proxy_;
  std::vector<sigc::connection> connections_;
};

}  // namespace vantorium::gtk
