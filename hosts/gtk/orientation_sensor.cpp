#include "hosts/gtk/orientation_sensor.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace vantorium::gtk {

namespace {

// The sensor names the edge that is up; the SDK where the top points.
ui::DeviceOrientation fromSensor(const Glib::ustring& edge) {
  if (edge == "normal") return ui::DeviceOrientation::portrait;
  if (edge == "bottom-up") return ui::DeviceOrientation::portraitUpsideDown;
  if (edge == "right-up") return ui::DeviceOrientation::landscapeLeft;
  if (edge == "left-up") return ui::DeviceOrientation::landscapeRight;
  return ui::DeviceOrientation::unknown;
}

}  // namespace

ui::DeviceOrientation heldAgainstWindow(ui::DeviceOrientation reading, bool isTurned, bool isWide) {
  using enum ui::DeviceOrientation;
  // A full turn to the left, from the way that is natural to the device.
  constexpr std::array turn{portrait, landscapeLeft, portraitUpsideDown, landscapeRight};
  const auto found = std::ranges::find(turn, reading);
  if (found == turn.end()) return reading;
  const auto steps = isTurned ? 0 : found - turn.begin();
  const auto upright = isWide ? 3 : 0;  // what a wide and an upright window are to ads
  return turn.at(static_cast<std::size_t>((upright + steps) % 4));
}

OrientationSensor::OrientationSensor(std::function<void()> changed)
    : changed_(std::move(changed)),
      service_("net.hadess.SensorProxy", "/net/hadess/SensorProxy", "net.hadess.SensorProxy",
               [this] { update(); }) {}

void OrientationSensor::setClaimed(bool claimed) {
  isWanted_ = claimed;
  update();
}

void OrientationSensor::hold(ui::DeviceOrientation orientation) {
  isHeld_ = true;
  set(orientation);
}

void OrientationSensor::update() {
  const bool canClaim = service_.property<bool>("HasAccelerometer").value_or(false);
  if (!canClaim) isClaimed_ = false;
  if (canClaim && isWanted_ != isClaimed_) {
    isClaimed_ = isWanted_;
    service_.call(isWanted_ ? "ClaimAccelerometer" : "ReleaseAccelerometer");
  }
  if (!isClaimed_ || isHeld_) return;
  if (const auto edge = service_.property<Glib::ustring>("AccelerometerOrientation")) set(fromSensor(*edge));
}

void OrientationSensor::set(ui::DeviceOrientation orientation) {
  if (orientation == orientation_) return;
  orientation_ = orientation;
  changed_();
}

}  // namespace vantorium::gtk
