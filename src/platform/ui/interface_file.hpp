#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <vantorium/export.h>

#include "platform/ui/view.hpp"

namespace vantorium::ui {

/// A file of the SDK's resource bundle, compiled in. Empty when there is none of that name.
VANTORIUM_HOST_API std::string_view bundleResource(std::string_view name);

/// What an interface file is connected to. Outlets and actions that the file names and the map does not have
/// are errors, and so are outlets of the map that the file does not fill.
struct InterfaceConnections {
  /// Called with the view that the file connects under the name.
  std::map<std::string, std::function<void(std::shared_ptr<View>)>> outlets;
  /// Called when a button that the file connects to the name is tapped.
  std::map<std::string, std::function<void()>> actions;
  /// Makes views of classes that the loader does not know.
  std::map<std::string, std::function<std::shared_ptr<View>()>> classes;
};

/// Builds the tree that the interface file `name`.json of the bundle describes and connects it. The files are
/// part of the library, so a broken one is a programming error: it ends the process with a message in builds
/// with assertions, and gives an empty view otherwise.
std::shared_ptr<View> loadInterface(const std::string& name, const InterfaceConnections& connections);

}  // namespace vantorium::ui
