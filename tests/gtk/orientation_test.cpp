// How the device is held: what iio-sensor-proxy tells, played by the test on the bus that stands for the
// system's.
#include <gtest/gtest.h>

#include <string>

#include "gtk/support/desktop.hpp"
#include "hosts/gtk/orientation_sensor.hpp"

namespace vantorium::test {
namespace {

using ui::DeviceOrientation;
using ui::InterfaceOrientation;

/// Answers as iio-sensor-proxy for as long as it lives.
class SensorProxy {
 public:
  SensorProxy() {
    const auto node = Gio::DBus::NodeInfo::create_for_xml(
        "<node><interface name='net.hadess.SensorProxy'>"
        "<property name='HasAccelerometer' type='b' access='read'/>"
        "<property name='AccelerometerOrientation' type='s' access='read'/>"
        "<method name='ClaimAccelerometer'/><method name='ReleaseAccelerometer'/></interface></node>");
    object_ = bus_->register_object(path, node->lookup_interface(), vtable_);
    name_ = Gio::DBus::own_name(Gio::DBus::BusType::SESSION, "net.hadess.SensorProxy");
  }
  ~SensorProxy() {
    Gio::DBus::unown_name(name_);
    bus_->unregister_object(object_);
  }
  SensorProxy(const SensorProxy&) = delete;
  SensorProxy& operator=(const SensorProxy&) = delete;

  void turn(const std::string& edgeThatIsUp) {
    edge_ = edgeThatIsUp;
    const std::map<Glib::ustring, Glib::VariantBase> changed{
        {"AccelerometerOrientation", Glib::Variant<Glib::ustring>::create(edge_)}};
    bus_->emit_signal(path, "org.freedesktop.DBus.Properties", "PropertiesChanged", {},
                      Glib::VariantContainerBase::create_tuple(
                          {Glib::Variant<Glib::ustring>::create("net.hadess.SensorProxy"),
                           Glib::Variant<std::map<Glib::ustring, Glib::VariantBase>>::create(changed),
                           Glib::Variant<std::vector<Glib::ustring>>::create({})}));
  }

  int claims = 0;

 private:
  void call(const Glib::ustring& method, const Glib::RefPtr<Gio::DBus::MethodInvocation>& invocation) {
    claims += method == "ClaimAccelerometer" ? 1 : -1;
    invocation->return_value({});
  }
  Glib::VariantBase property(const Glib::ustring& name) const {
    if (name == "HasAccelerometer") return Glib::Variant<bool>::create(true);
    return Glib::Variant<Glib::ustring>::create(edge_);
  }

  static constexpr const char* path = "/net/hadess/SensorProxy";
  Glib::ustring edge_ = "normal";
  const Glib::RefPtr<Gio::DBus::Connection> bus_ =
      Gio::DBus::Connection::get_sync(Gio::DBus::BusType::SESSION);
  const Gio::DBus::InterfaceVTable vtable_{
      [this](const auto&, const auto&, const auto&, const auto&, const Glib::ustring& method, const auto&,
             const auto& invocation) { call(method, invocation); },
      [this](Glib::VariantBase& value, const auto&, const auto&, const auto&, const auto&,
             const Glib::ustring& name) { value = property(name); }};
  guint object_ = 0, name_ = 0;
};

struct SensorTest : DesktopTest {
  SensorProxy sensor;
  std::shared_ptr<ui::ViewController> screen = std::make_shared<ui::ViewController>(host->application());

  DeviceOrientation held() const { return host->application().deviceOrientation(); }
};

TEST_F(SensorTest, IsReadWhileAnAdIsShown) {
  EXPECT_EQ(held(), DeviceOrientation::unknown) << "nobody asked yet";
  present(screen);
  ASSERT_TRUE(waitFor([&] { return held() == DeviceOrientation::portrait; }));
  EXPECT_TRUE(waitFor([&] { return sensor.claims == 1; }));
  // The window stays upright, whatever its device does: it is the ad that follows.
  for (const auto& [edge, orientation] :
       std::map<std::string, DeviceOrientation>{{"left-up", DeviceOrientation::landscapeRight},
                                                {"right-up", DeviceOrientation::landscapeLeft},
                                                {"normal", DeviceOrientation::portrait}}) {
    sensor.turn(edge);
    EXPECT_TRUE(waitFor([&, expected = orientation] { return held() == expected; })) << edge;
    EXPECT_EQ(host->application().interfaceOrientation(), InterfaceOrientation::portrait);
  }
  screen->dismiss(false);
  EXPECT_TRUE(waitFor([&] { return sensor.claims == 0; }));
}

TEST_F(SensorTest, AWideWindowIsUprightInLandscape) {
  present(screen);
  window.set_default_size(600, 400);
  ASSERT_TRUE(waitFor([&] { return host->application().screenBounds().width > 400; }));
  EXPECT_EQ(host->application().interfaceOrientation(), InterfaceOrientation::landscapeLeft);
  ASSERT_TRUE(waitFor([&] { return held() == DeviceOrientation::landscapeRight; })) << "its natural way up";
  sensor.turn("right-up");
  EXPECT_TRUE(waitFor([&] { return held() == DeviceOrientation::portrait; })) << "a quarter turn from there";
}

TEST(HeldAgainstWindowTest, ADesktopThatTurnedShowsItsWindowsUpright) {
  using enum DeviceOrientation;
  for (const auto reading : {portrait, landscapeLeft, landscapeRight, portraitUpsideDown}) {
    EXPECT_EQ(gtk::heldAgainstWindow(reading, true, false), portrait);
    EXPECT_EQ(gtk::heldAgainstWindow(reading, true, true), landscapeRight);
    EXPECT_EQ(gtk::heldAgainstWindow(reading, false, false), reading);
  }
  EXPECT_EQ(gtk::heldAgainstWindow(landscapeRight, false, true), portraitUpsideDown);
  EXPECT_EQ(gtk::heldAgainstWindow(faceUp, true, true), faceUp);
}

}  // namespace
}  // namespace vantorium::test
