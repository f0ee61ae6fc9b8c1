#pragma once

#include <gtkmm.h>

#include <memory>

#include <vantorium/gtk.hpp>

/// Lets a developer turn the device that has no sensor: a menu "Device", and Ctrl with the left and right
/// arrow keys, which work over an ad too.
void addDeviceMenu(Gtk::Application& application, const std::shared_ptr<vantorium::Host>& host);
