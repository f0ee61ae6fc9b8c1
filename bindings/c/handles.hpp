#pragma once

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include <vantorium/delegate.hpp>
#include <vantorium/dispatch_queue.hpp>
#include <vantorium/error.hpp>
#include <vantorium/native_ad.hpp>
#include <vantorium/options.hpp>
#include <vantorium/parameters.hpp>
#include <vantorium/vantorium.h>
#include <vantorium/vantorium.hpp>

#include "bindings/c/handle_table.hpp"

namespace vantorium::c {

/// Thrown inside the binding when an argument is of no use, and never out of it.
struct VANTORIUM_HOST_API Refusal {
  Error error;
};
[[noreturn]] VANTORIUM_HOST_API void refuse(const std::string& text);

/// What the type of a handle stands for.
template <typename Handle>
struct Handled;
template <typename Class, Kind kindOfHandle>
struct As {
  using Object = Class;
  static constexpr Kind kind = kindOfHandle;
};

/// Work that waits to be run.
using Work = std::function<void()>;

template <>
struct Handled<vantorium_error> : As<Error, Kind::error> {};
template <>
struct Handled<vantorium_queue> : As<DispatchQueue, Kind::queue> {};
template <>
struct Handled<vantorium_work> : As<Work, Kind::work> {};
template <>
struct Handled<vantorium_host> : As<Host, Kind::host> {};
template <>
struct Handled<vantorium_delegate> : As<VantoriumDelegate, Kind::delegate> {};
template <>
struct Handled<vantorium_parameters> : As<Parameters, Kind::parameters> {};
template <>
struct Handled<vantorium_native_ad_options> : As<VantoriumNativeAdOptions, Kind::nativeAdOptions> {};
template <>
struct Handled<vantorium_media_view_options> : As<VantoriumMediaViewOptions, Kind::mediaViewOptions> {};
template <>
struct Handled<vantorium_server_parameter> : As<VantoriumServerParameter, Kind::serverParameter> {};
template <>
struct Handled<vantorium_native_ad> : As<VantoriumNativeAd, Kind::nativeAd> {};
template <>
struct Handled<vantorium_native_ad_asset> : As<VantoriumNativeAdAsset, Kind::nativeAdAsset> {};
template <>
struct Handled<vantorium_native_ad_view> : As<VantoriumNativeAdView, Kind::nativeAdView> {};

/// What a handle of one of these kinds stands for; refuses, naming the argument, what is none or is of no use
/// on this thread.
VANTORIUM_HOST_API HandleTable::Found found(const void* handle, HandleTable::Kinds kinds,
                                            const char* argument);
/// Likewise, and the handle ends.
VANTORIUM_HOST_API HandleTable::Found taken(const void* handle, HandleTable::Kinds kinds,
                                            const char* argument);

template <typename Handle>
std::shared_ptr<typename Handled<Handle>::Object> object(Handle* handle, const char* argument) {
  return std::static_pointer_cast<typename Handled<Handle>::Object>(
      found(handle, {Handled<Handle>::kind}, argument).object);
}

/// Likewise, and null for null.
template <typename Handle>
std::shared_ptr<typename Handled<Handle>::Object> objectIfAny(Handle* handle, const char* argument) {
  return handle == nullptr ? nullptr : object(handle, argument);
}

/// A new handle, whose one reference is the application's.
template <typename Handle>
Handle* give(std::shared_ptr<typename Handled<Handle>::Object> given,
             std::optional<std::thread::id> user = std::nullopt,
             std::optional<std::thread::id> owner = std::nullopt) {
  if (!given) return nullptr;
  return static_cast<Handle*>(
      HandleTable::shared().add({Handled<Handle>::kind, std::move(given), user, owner}));
}

/// A handle of an object that belongs to this thread.
template <typename Handle>
Handle* giveToThisThread(std::shared_ptr<typename Handled<Handle>::Object> given) {
  const auto self = std::this_thread::get_id();
  return give<Handle>(std::move(given), self, self);
}

/// A host's handle. The host itself stays until the process ends, for views and the SDK refer to it.
VANTORIUM_HOST_API vantorium_host* giveHost(std::shared_ptr<Host> host);

/// A handle that ends with the scope, unless the application keeps it.
template <typename Handle>
class Lent {
 public:
  explicit Lent(std::shared_ptr<typename Handled<Handle>::Object> lent,
                std::optional<std::thread::id> user = std::nullopt)
      : handle_(give<Handle>(std::move(lent), user)) {}
  ~Lent() {
    if (handle_ != nullptr) HandleTable::shared().release(handle_);
  }
  Lent(Lent&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Lent(const Lent&) = delete;
  Lent& operator=(const Lent&) = delete;
  Lent& operator=(Lent&&) = delete;
  Handle* get() const { return handle_; }

 private:
  Handle* handle_;
};

inline Lent<vantorium_error> lend(const std::optional<Error>& error) {
  return Lent<vantorium_error>(error ? std::make_shared<Error>(*error) : nullptr);
}

/// The text; refuses, naming the argument, null and what is not UTF-8.
VANTORIUM_HOST_API std::string text(const char* given, const char* argument);
/// Likewise, and none for null.
VANTORIUM_HOST_API std::optional<std::string> textIfAny(const char* given, const char* argument);

}  // namespace vantorium::c
