#pragma once

#include <functional>

#include "hosts/gtk/system_service.hpp"
#include "platform/ui/application.hpp"

namespace vantorium::gtk {

/// How a device is held whose sensor says `reading`, told against a window that is `isWide` or not. A desktop
/// turns its monitor with the sensor, if it does at all: `isTurned` says so, and the window is upright then.
ui::DeviceOrientation heldAgainstWindow(ui::DeviceOrientation reading, bool isTurned, bool isWide);

/// How the device is held, as iio-sensor-proxy tells; unknown where there is no such sensor. The sensor is
/// used only while it is claimed. Main thread only.
class OrientationSensor {
 public:
  explicit OrientationSensor(std::function<void()> changed);

  void setClaimed(bool claimed);
  ui::DeviceOrientation orientation() const { return orientation_; }
  /// From now on the device is held like this, whatever the sensor says.
  void hold(ui::DeviceOrientation orientation);
  bool isHeld() const { return isHeld_; }

 private:
  void update();
  void set(ui::DeviceOrientation orientation);

  std::function<void()> changed_;
  ui::DeviceOrientation orientation_ = ui::DeviceOrientation::unknown;
  bool isHeld_ = false, isWanted_ = false, isClaimed_ = false;
  SystemService service_;
};

}  // namespace vantorium::gtk
