#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <array>

#include "gtk/support/desktop.hpp"
#include "hosts/gtk/device_information.hpp"
#include "hosts/gtk/device_services.hpp"
#include "hosts/gtk/machine_facts.hpp"
#include "hosts/gtk/reachability_probe.hpp"
#include "hosts/gtk/route_watch.hpp"

namespace vantorium::test {
namespace {

/// Sets a variable of the environment for a scope.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    if (const char* const known = std::getenv(name)) known_ = known;
    value != nullptr ? setenv(name, value, 1) : unsetenv(name);
  }
  ~Variable() { known_ ? setenv(name_, known_->c_str(), 1) : unsetenv(name_); }

 private:
  const char* name_;
  std::optional<std::string> known_;
};

TEST_F(DesktopTest, TellsWhatLinuxKnows) {
  const DeviceFacts facts = host->device().facts();
  EXPECT_EQ(facts.model.rfind("Linux ", 0), 0U);
  EXPECT_FALSE(facts.machine.empty());
  EXPECT_FALSE(facts.timezone.empty());
  EXPECT_GT(facts.screenWidth, 400);
  EXPECT_GT(facts.freeSpace.value_or(0), 0);
  EXPECT_EQ(facts.bundleIdentifier, "com.vantorium.tests");
  EXPECT_FALSE(facts.appVersion);
  EXPECT_FALSE(facts.trackingEnabled);
  EXPECT_FALSE(facts.advertisingIdentifier);
  EXPECT_TRUE(host->device().fileExists(folder.path()));
  EXPECT_FALSE(host->device().fileExists(folder.path() / "none"));
  EXPECT_FALSE(host->device().createFile(folder.path() / "none/file"));
  EXPECT_TRUE(host->device().createFile(folder.path() / "file"));
}

TEST_F(DesktopTest, ReadsPowerSuppliesAndReleases) {
  write("power/AC/type", "Mains\n");
  write("power/mouse/type", "Battery\n");
  write("power/mouse/scope", "Device\n");
  EXPECT_EQ(gtk::readBattery(folder.path() / "power").level, -1);
  write("power/BAT0/type", "Battery\n");
  write("power/BAT0/capacity", "80\n");
  for (const auto& [status, state] :
       std::map<std::string, BatteryState>{{"Charging", BatteryState::charging},
                                           {"Full", BatteryState::full},
                                           {"Not charging", BatteryState::unplugged},
                                           {"Discharging", BatteryState::unplugged},
                                           {"Strange", BatteryState::unknown}}) {
    write("power/BAT0/status", status + "\n");
    const gtk::Battery battery = gtk::readBattery(folder.path() / "power");
    EXPECT_EQ(battery.state, state) << status;
    EXPECT_FLOAT_EQ(battery.level, 0.8F);
  }
  EXPECT_EQ(gtk::systemVersion(write("release", "NAME=Linux\nVERSION_ID=\"12\"\n")), "12");
  EXPECT_EQ(gtk::systemVersion(write("rolling", "NAME=Linux\n")), "");
  EXPECT_EQ(gtk::modelForChassis(gtk::chassisFromFirmware(write("chassis", "30\n"))), "Linux tablet");
}

TEST(LanguageTest, FollowsTheUsersSettings) {
  const Variable all("LC_ALL", nullptr), messages("LC_MESSAGES", nullptr), time("LC_TIME", "en_GB.UTF-8");
  {
    const Variable lang("LANG", "de_AT.UTF-8"), list("LANGUAGE", "de_AT:en_GB.UTF-8:zh_Hant_TW");
    EXPECT_EQ(gtk::preferredLanguages(), (std::vector<std::string>{"de-AT", "en-GB", "zh-Hant-TW"}));
    EXPECT_EQ(gtk::dateLocale(), "en_GB");
  }
  const Variable lang("LANG", "C.UTF-8"), list("LANGUAGE", "de"), neutral("LC_TIME", "C");
  EXPECT_TRUE(gtk::preferredLanguages().empty());
  EXPECT_EQ(gtk::dateLocale(), "en_US");
}

TEST_F(DesktopTest, TheAdvertisingIdentifierIsKeptForThisUserOnly) {
  const auto file = folder.path() / "preferences/advertising-identifier";
  const auto first = gtk::advertisingIdentifier(file);
  ASSERT_TRUE(first);
  EXPECT_EQ(first->size(), 36U);
  EXPECT_EQ(gtk::advertisingIdentifier(file), first);
  struct stat status {};
  ASSERT_EQ(::stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  write("preferences/advertising-identifier", "not an identifier");
  const auto second = gtk::advertisingIdentifier(file);
  ASSERT_TRUE(second);
  EXPECT_NE(second, first);
  write("blocked", "");
  EXPECT_FALSE(gtk::advertisingIdentifier(folder.path() / "blocked/advertising-identifier"));
}

TEST_F(DesktopTest, StoreLinksAndRefusedTargets) {
  auto& application = host->application();
  EXPECT_EQ(application.storeURL("a b/c"), "appstream://a%20b%2Fc");
  std::optional<bool> opened;
  application.openURL("file:///etc/passwd", [&](bool result) { opened = result; });
  EXPECT_EQ(opened, false);
  opened.reset();
  application.openURL("nobody-handles-this://x", [&](bool result) { opened = result; });
  ASSERT_TRUE(waitFor([&] { return opened.has_value(); }));
  EXPECT_FALSE(*opened);
}

TEST_F(DesktopTest, TurningTheDeviceByHandIsHeard) {
  auto& application = host->application();
  EXPECT_EQ(application.deviceOrientation(), ui::DeviceOrientation::unknown) << "no sensor here";
  int heard = 0;
  const auto observation =
      application.observe(ui::ApplicationEvent::deviceOrientationDidChange, [&] { ++heard; });
  gtk::setDeviceOrientation(*host, gtk::DeviceOrientation::landscapeRight);
  gtk::setDeviceOrientation(*host, gtk::DeviceOrientation::landscapeRight);
  EXPECT_EQ(heard, 1);
  EXPECT_EQ(application.deviceOrientation(), ui::DeviceOrientation::landscapeRight);
}

TEST(ModemTest, NamesTheFastestTechnology) {
  EXPECT_EQ(gtk::radioTechnologyName(0), std::nullopt);
  EXPECT_EQ(gtk::radioTechnologyName(1U << 3 | 1U << 5), "WCDMA");
  EXPECT_EQ(gtk::radioTechnologyName(1U << 14 | 1U << 5), "LTE");
}

TEST(RouteWatchTest, TellsOnceForAllThatIsThereAndNothingAfterItsEnd) {
  std::array<int, 2> ends{};
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends.data()), 0);
  const FileDescriptor kernel(ends[0]);
  int told = 0, toldAfterEnd = 0;
  std::unique_ptr<gtk::RouteWatch> watch;
  const auto send = [&] { return ::send(kernel.get(), "news", 4, 0) == 4; };
  watch = std::make_unique<gtk::RouteWatch>(FileDescriptor(ends[1]), [&] {
    ++told;
    if (told == 2) watch.reset();  // it may go in its own handler
  });
  EXPECT_TRUE(send() && send() && send());
  ASSERT_TRUE(waitFor([&] { return told > 0; }));
  EXPECT_EQ(told, 1);
  EXPECT_TRUE(send());
  ASSERT_TRUE(waitFor([&] { return !watch; }));
  EXPECT_EQ(told, 2);
  EXPECT_FALSE(send()) << "nobody listens any more";
  const gtk::RouteWatch refused(FileDescriptor(-1), [&] { ++toldAfterEnd; });
  EXPECT_EQ(toldAfterEnd, 0);
}

TEST(RouteProbeTest, AnswersAlsoWithoutAWayOut) {
  gtk::RouteProbe probe([] { return std::optional<std::string>("LTE"); }, true);
  EXPECT_EQ(probe.flags().value_or(0) & reachability_flags::reachable, reachability_flags::reachable);
  EXPECT_EQ(probe.radioAccessTechnology(), "LTE");
}

}  // namespace
}  // namespace vantorium::test
