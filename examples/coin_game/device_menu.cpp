#include "device_menu.hpp"

#include <array>

namespace {

using vantorium::gtk::DeviceOrientation;

/// A full turn to the left, beginning at the way a phone is mostly held.
constexpr std::array turn{DeviceOrientation::portrait, DeviceOrientation::landscapeLeft,
                          DeviceOrientation::portraitUpsideDown, DeviceOrientation::landscapeRight};

}  // namespace

void addDeviceMenu(Gtk::Application& application, const std::shared_ptr<vantorium::Host>& host) {
  const auto position = std::make_shared<std::size_t>(0);
  const auto turnBy = [host, position](std::size_t steps) {
    *position = (*position + steps) % turn.size();
    vantorium::gtk::setDeviceOrientation(*host, turn.at(*position));
  };
  application.add_action("turn-left", [turnBy] { turnBy(1); });
  application.add_action("turn-right", [turnBy] { turnBy(turn.size() - 1); });
  application.add_action("lay-flat",
                         [host] { vantorium::gtk::setDeviceOrientation(*host, DeviceOrientation::faceUp); });
  application.set_accel_for_action("app.turn-left", "<Control>Left");
  application.set_accel_for_action("app.turn-right", "<Control>Right");

  const auto entries = Gio::Menu::create();
  entries->append("Turn _Left", "app.turn-left");
  entries->append("Turn _Right", "app.turn-right");
  entries->append("Lay _Flat", "app.lay-flat");
  const auto bar = Gio::Menu::create();
  bar->append_submenu("_Device", entries);
  application.set_menubar(bar);
}
