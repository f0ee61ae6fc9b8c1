#include "device/reachability.hpp"

#include <gtest/gtest.h>

#include "hosts/headless/headless_host.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium {
namespace {

using Status = VantoriumReachability::NetworkStatus;
namespace bits = reachability_flags;

TEST(ReachabilityTest, TellsLinkAndTechnologyFromTheFlagsOfTheMoment) {
  const testing::TemporaryDirectory home;
  headless::Host host({.home = home.path()});
  const auto reachability = VantoriumReachability::make(host);
  struct Case {
    headless::HeadlessReachability::State state;
    Status status;
    const char* technology;
  };
  constexpr auto cellular = bits::reachable | bits::isWWAN;
  const std::vector<Case> cases = {
      {{.flags = bits::reachable, .radio = {}}, Status::reachableViaWiFi, "WIFI"},
      {{.flags = bits::reachable, .radio = {}, .reachableOnWWAN = false}, Status::reachableViaWiFi, "WIFI"},
      {{.flags = bits::reachable | bits::connectionRequired, .radio = {}}, Status::reachableViaWiFi, "WIFI"},
      {{.flags = bits::reachable | bits::connectionRequired | bits::transientConnection, .radio = {}},
       Status::notReachable,
       "None"},
      {{.flags = 0, .radio = {}}, Status::notReachable, "None"},
      {{.flags = std::nullopt, .radio = {}}, Status::notReachable, "None"},
      {{.flags = bits::isWWAN, .radio = "LTE"}, Status::notReachable, "None"},
      {{.flags = cellular, .radio = "LTE"}, Status::reachableViaWWAN, "4G"},
      {{.flags = cellular, .radio = "LTE", .reachableOnWWAN = false}, Status::notReachable, "None"},
      {{.flags = cellular, .radio = "LTE", .isRunningOnDevice = false}, Status::reachableViaWiFi, "WIFI"},
      {{.flags = cellular, .radio = "Edge"}, Status::reachableViaWWAN, "2G"},
      {{.flags = cellular, .radio = "eHRPD"}, Status::reachableViaWWAN, "3G"},
      {{.flags = cellular, .radio = "lte"}, Status::reachableViaWWAN, "Cellular"},
      {{.flags = cellular, .radio = {}}, Status::reachableViaWWAN, "Cellular"},
  };
  for (const Case& one : cases) {
    host.reachability().setState(one.state);
    EXPECT_EQ(reachability->currentReachabilityStatus(), one.status) << &one - cases.data();
    EXPECT_EQ(reachability->isReachable(), one.status != Status::notReachable) << &one - cases.data();
    EXPECT_EQ(reachability->currentReachabilityTechnologyString(), one.technology) << &one - cases.data();
  }
  EXPECT_EQ(VantoriumReachability::description(Status::notReachable), "No Connection");
  EXPECT_EQ(VantoriumReachability::description(Status::reachableViaWiFi), "WiFi");
}

TEST(ReachabilityTest, TellsWhenTheDeviceComesOnline) {
  const testing::TemporaryDirectory home;
  headless::Host host({.home = home.path()});
  auto reachability = VantoriumReachability::make(host);
  const auto change = [&](headless::HeadlessReachability::State state) {
    host.reachability().setState(std::move(state));
    host.loop().runPending();
  };
  int first = 0, second = 0;
  auto token = reachability->observeOnline([&] { ++first; });
  const auto other = reachability->observeOnline([&] { ++second; });
  change({.flags = bits::reachable | bits::isWWAN});
  EXPECT_EQ(first, 0) << "another link is no news";
  change({.flags = 0});
  change({.flags = bits::isWWAN});
  EXPECT_EQ(first, 0);
  host.reachability().setState({});
  EXPECT_EQ(first, 0) << "told on the main queue";
  change({});
  EXPECT_EQ(first, 1) << "two changes, and once online";
  change({.flags = std::nullopt});
  token.reset();
  change({});
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 2);
  reachability.reset();
  change({.flags = 0});
  change({});
  EXPECT_EQ(second, 2);
}

TEST(ReachabilityTest, IsAbsentWithoutAMonitor) {
  const testing::TemporaryDirectory home;
  headless::Host host({.home = home.path(), .hasReachabilityMonitor = false});
  EXPECT_EQ(VantoriumReachability::make(host), nullptr);
}

}  // namespace
}  // namespace vantorium
