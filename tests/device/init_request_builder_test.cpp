#include "device/init_request_builder.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "hosts/headless/headless_host.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;

class InitRequestBuilderTest : public ::testing::Test {
 protected:
  json body(const std::optional<Parameters>& parameters = std::nullopt) {
    return InitRequestBuilder::requestBody(host_, defaults_, "app", "user", parameters);
  }
  void set(const char* fact, const json& value) {
    EXPECT_EQ(host_.deviceFacts().set(fact, value), std::nullopt);
  }

  testing::TemporaryDirectory home_;
  headless::Host host_{{.home = home_.path()}};
  UserDefaults defaults_{home_.path() / "preferences"};
};

TEST_F(InitRequestBuilderTest, TellsAllThatIsKnown) {
  set("volume", 0.8);
  set("batteryLevel", 0.55);
  set("batteryState", "charging");
  set("timezone", "Europe/Vienna");
  set("languages", {"de-AT", "en"});
  set("carrier", "Tele");
  set("trackingEnabled", true);
  set("idfa", "6f9619ff-8b86-d011-b42d-00c04fc964ff");
  set("freeSpace", 123456789012);
  set("existingPaths", {"/etc/apt"});
  set("bundle", nullptr);
  defaults_.set(settings_keys::appInstallDate, Date(1'500'000'000'900ms));
  defaults_.set(settings_keys::appLastUpdateDate, Date(1'600'000'000'000ms));
  json told = body();
  EXPECT_FALSE(told["sdkVersion"].get<std::string>().empty());
  told.erase("sdkVersion");
  const json expected = {{"appId", "app"},
                         {"userId", "user"},
                         {"osVersion", "12.1"},
                         {"manufacturer", "apple"},
                         {"sWidth", 390.0},
                         {"sHeight", 844.0},
                         {"platform", "Headless"},
                         {"model", "headless1,1"},
                         {"rooted", true},
                         {"timezone", "Europe/Vienna"},
                         {"volumeLevel", 0.8},
                         {"batteryLevel", 0.55},
                         {"batteryState", "CHARGING"},
                         {"package", "org.example.app"},
                         {"idfa", "6F9619FF-8B86-D011-B42D-00C04FC964FF"},
                         {"carrier", "Tele"},
                         {"locale", "de-AT"},
                         {"diskFreeSize", "123456789012"},
                         {"appVersion", "1.0"},
                         {"firstInstallTime", 1500000000000},
                         {"lastUpdateTime", 1600000000000}};
  EXPECT_EQ(told, expected);
  EXPECT_EQ(told["volumeLevel"].dump(), "0.8");
}

TEST_F(InitRequestBuilderTest, LeavesOutWhatIsNotKnown) {
  set("languages", json::array());
  set("freeSpace", nullptr);
  set("bundleIdentifier", nullptr);
  set("appVersion", nullptr);
  set("idfa", "6F9619FF-8B86-D011-B42D-00C04FC964FF");
  const json told = body();
  for (const char* key : {"gender", "age", "dateOfBirth", "package", "idfa", "carrier", "locale",
                          "diskFreeSize", "appVersion", "firstInstallTime", "lastUpdateTime"})
    EXPECT_FALSE(told.contains(key)) << key;
  EXPECT_EQ(told["rooted"], false);
  EXPECT_EQ(told["batteryState"], "NOT_CHARGING");
}

TEST_F(InitRequestBuilderTest, TakesParametersOfTheRightType) {
  const Date newYearsEve(std::chrono::sys_days{std::chrono::year(2018) / 12 / 31} + 12h);
  const json told =
      body(Parameters{{"gender", "m"}, {"age", 30}, {"userId", "u"}, {"dateOfBirth", newYearsEve}});
  EXPECT_EQ(told["gender"], "m");
  EXPECT_EQ(told["age"], 30);
  EXPECT_EQ(told["userId"], "user");
  EXPECT_EQ(told["dateOfBirth"], "2019/12/31");  // the year of that week

  const json skipped = body(Parameters{{"gender", true}, {"age", "30"}, {"dateOfBirth", "2018-12-31"}});
  for (const char* key : {"gender", "age", "dateOfBirth"}) EXPECT_FALSE(skipped.contains(key)) << key;
}

TEST_F(InitRequestBuilderTest, TellsTheVersionThatItsBundleStates) {
  const std::string builtIn = body()["sdkVersion"];
  set("bundle", json::object());
  EXPECT_FALSE(body().contains("sdkVersion"));
  for (const json& stored : {json("2.5"), json(""), json(3), json(1.5), json(true)}) {
    set("bundle", {{"CFBundleShortVersionString", stored}});
    EXPECT_EQ(body()["sdkVersion"], stored);
  }
  set("bundle", nullptr);
  EXPECT_EQ(body()["sdkVersion"], builtIn);
}

TEST_F(InitRequestBuilderTest, TellsTheModelThatASimulatorPretendsToBe) {
  set("environment", {{"SIMULATOR_MODEL_IDENTIFIER", "phone9,9"}});
  EXPECT_EQ(body()["model"], "phone9,9");
}

}  // namespace
}  // namespace vantorium
