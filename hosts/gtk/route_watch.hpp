#pragma once

#include <glib.h>

#include <functional>

#include "platform/foundation/file_descriptor.hpp"

namespace vantorium::gtk {

/// Tells on the main context that the machine's links or routes have changed. Made and dropped on any thread;
/// dropped on the main thread, it tells nothing after that.
class RouteWatch {
 public:
  /// Where the kernel tells of links and routes (netlink); not open when the system refuses it.
  static FileDescriptor openNews();

  /// Calls `changed` each time there is something to be read in `news`, once for all that is there. Without
  /// an open descriptor nothing is ever called.
  RouteWatch(FileDescriptor news, std::function<void()> changed);
  ~RouteWatch();
  RouteWatch(const RouteWatch&) = delete;
  RouteWatch& operator=(const RouteWatch&) = delete;

 private:
  GSource* source_ = nullptr;
};

}  // namespace vantorium::gtk
