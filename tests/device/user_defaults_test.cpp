#include "device/user_defaults.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>
#include <vector>

#include "platform/foundation/file_descriptor.hpp"
#include "platform/foundation/temporary_file.hpp"
#include "support/service_world.hpp"

namespace vantorium {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;

class UserDefaultsTest : public ::testing::Test {
 protected:
  void put(const std::string& text) {
    std::filesystem::create_directories(folder_);
    std::ofstream(file_) << text;
  }
  json stored() const { return json::parse(testing::contentOf(file_)); }
  FileDescriptor lockFile() const {
    return FileDescriptor(open((folder_ / "settings.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  }
  /// Takes turns at the lock with those who write until the file says that.
  bool awaitStored(const json& expected) const {
    const auto patience = std::chrono::steady_clock::now() + 30s;
    const FileDescriptor lock = lockFile();
    while (std::chrono::steady_clock::now() < patience) {
      flock(lock.get(), LOCK_EX);
      const bool isThere = json::parse(testing::contentOf(file_), nullptr, false) == expected;
      flock(lock.get(), LOCK_UN);
      if (isThere) return true;
      std::this_thread::yield();
    }
    return stored() == expected;
  }

  /// Runs `work` in a process of its own, which ends without cleaning up.
  template <typename Work>
  static pid_t inChild(Work work) {
    const pid_t child = fork();
    if (child == 0) {
      work();
      _exit(0);
    }
    return child;
  }
  static void await(pid_t child) { ASSERT_EQ(waitpid(child, nullptr, 0), child); }

  testing::TemporaryDirectory home_;
  std::filesystem::path folder_ = home_.path() / "deep" / "preferences";
  std::filesystem::path file_ = folder_ / "settings.json";
};

TEST_F(UserDefaultsTest, KeepsStringsAndDatesToTheLastDigit) {
  const Date date(1'500'000'000'123'456'789ns);
  UserDefaults first(folder_);
  EXPECT_EQ(first.string("s"), std::nullopt);
  first.set("s", "a\nb\u00e4");
  first.set("d", date);
  const UserDefaults nextLaunch(folder_);
  for (const UserDefaults* defaults : {&std::as_const(first), &nextLaunch}) {
    EXPECT_EQ(defaults->string("s"), "a\nb\u00e4");
    EXPECT_EQ(defaults->date("d"), date);
    EXPECT_EQ(defaults->date("s"), std::nullopt);
    EXPECT_EQ(defaults->string("d"), std::nullopt);
  }
}

TEST_F(UserDefaultsTest, LeavesAloneWhatItDoesNotKnow) {
  put(R"({"theirs": [1, {"x": null}], "com.vantorium.userID": 7, "com.vantorium.appInstallDate": "yesterday"})");
  UserDefaults defaults(folder_);
  EXPECT_EQ(defaults.string(settings_keys::userID), std::nullopt);
  EXPECT_EQ(defaults.getAppInstallDate(), std::nullopt);
  defaults.set("mine", "1");
  EXPECT_EQ(stored(), (json{{"theirs", {1, {{"x", nullptr}}}},
                            {"com.vantorium.userID", 7},
                            {"com.vantorium.appInstallDate", "yesterday"},
                            {"mine", "1"}}));
}

TEST_F(UserDefaultsTest, MovesACorruptFileAside) {
  for (const std::string& corrupt :
       {std::string("{\"a\": "), std::string("[]"), std::string(), std::string(500'000, '[')}) {
    put(corrupt);
    UserDefaults defaults(folder_);
    EXPECT_EQ(defaults.string("a"), std::nullopt);
    defaults.set("a", "b");
    EXPECT_EQ(stored(), (json{{"a", "b"}}));
    EXPECT_EQ(testing::contentOf(folder_ / "settings.json.corrupt"), corrupt);
  }
}

TEST_F(UserDefaultsTest, RemembersForThisProcessWhatCannotBeWritten) {
  std::ofstream(home_.path() / "deep") << "a file where the folder should be";
  UserDefaults defaults(folder_);
  defaults.set("id", "1");
  EXPECT_EQ(defaults.string("id"), "1");
  defaults.set("id", "2");
  EXPECT_EQ(defaults.string("id"), "2");
  std::filesystem::remove(home_.path() / "deep");
  defaults.set("other", "3");
  EXPECT_EQ(stored(), (json{{"id", "2"}, {"other", "3"}}));
}

TEST_F(UserDefaultsTest, LosesNoKeyOfSeveralProcesses) {
  constexpr int keys = 100;
  // A lock belongs to who opened the file, so objects of one process are to each other as those of several.
  const auto write = [this](const std::string& prefix) {
    UserDefaults defaults(folder_);
    for (int i = 0; i < keys; ++i) defaults.set(prefix + std::to_string(i), prefix);
  };
  std::vector<std::thread> writers;
  json expected;
  for (const char* const prefix : {"a", "b", "c"}) {
    writers.emplace_back(write, prefix);
    for (int i = 0; i < keys; ++i) expected[prefix + std::to_string(i)] = prefix;
  }
  for (std::thread& writer : writers) writer.join();
  EXPECT_TRUE(awaitStored(expected));
}

TEST_F(UserDefaultsTest, NobodyWaitsForTheLock) {
  UserDefaults defaults(folder_);
  defaults.set("a", "1");
  std::optional<FileDescriptor> other(lockFile());
  ASSERT_EQ(flock(other->get(), LOCK_EX), 0);
  defaults.set("a", "2");
  defaults.set("b", "3");
  EXPECT_EQ(defaults.string("a"), "2");
  put(R"({"a": "theirs", "d": "theirs"})");  // as the lock's holder may
  EXPECT_EQ(defaults.string("a"), "2");
  EXPECT_EQ(defaults.string("d"), "theirs");
  UserDefaults(folder_).set("c", "outlives its object");
  EXPECT_EQ(stored(), (json{{"a", "theirs"}, {"d", "theirs"}}));
  other.reset();
  EXPECT_TRUE(awaitStored({{"a", "2"}, {"b", "3"}, {"c", "outlives its object"}, {"d", "theirs"}}));
}

TEST_F(UserDefaultsTest, SurvivesAKillAtAnyMoment) {
  for (int round = 0; round < 20; ++round) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    const pid_t child = inChild([&] {
      UserDefaults defaults(folder_);
      for (char i = 0;; i = static_cast<char>((i + 1) % 100)) {
        defaults.set("counter", std::to_string(i));
        if (write(pipe[1], &i, 1) != 1) return;
      }
    });
    close(pipe[1]);
    char last = 0;
    for (int i = 0; i <= round; ++i) ASSERT_EQ(read(pipe[0], &last, 1), 1);
    kill(child, SIGKILL);
    await(child);
    while (read(pipe[0], &last, 1) == 1) {
    }
    close(pipe[0]);
    // The write after the last one acknowledged may or may not have been done.
    const int counter = std::stoi(stored()["counter"].get<std::string>());
    EXPECT_TRUE(counter == last || counter == (last + 1) % 100) << counter << " after " << int{last};
  }
  UserDefaults(folder_).set("after", "all");
  const std::filesystem::directory_iterator files(folder_);
  EXPECT_EQ(std::distance(begin(files), end(files)), 2) << "only the settings and their lock are left";
}

TEST_F(UserDefaultsTest, ClearsAwayWhatAKilledWriterLeft) {
  UserDefaults defaults(folder_);
  defaults.set("a", "1");
  std::optional<Error> error;
  auto cutOff = TemporaryFile::createBeside(file_, error);
  ASSERT_TRUE(cutOff);
  std::ofstream(folder_ / "theirs") << "x";
  defaults.set("b", "2");
  EXPECT_FALSE(std::filesystem::exists(cutOff->path()));
  EXPECT_TRUE(std::filesystem::exists(folder_ / "theirs"));
}

TEST_F(UserDefaultsTest, IsNotStoppedByAProcessThatStoppedInTheMiddle) {
  std::array<int, 2> pipe{};
  ASSERT_EQ(::pipe(pipe.data()), 0);
  std::filesystem::create_directories(folder_);
  const pid_t child = inChild([&] {
    const int lock = open((folder_ / "settings.lock").c_str(), O_RDWR | O_CREAT, 0600);
    const char locked = flock(lock, LOCK_EX) == 0 ? 1 : 0;
    if (write(pipe[1], &locked, 1) == 1) pause();
  });
  char locked = 0;
  ASSERT_EQ(read(pipe[0], &locked, 1), 1);
  ASSERT_EQ(locked, 1);
  UserDefaults defaults(folder_);
  defaults.set("a", "1");
  EXPECT_EQ(defaults.string("a"), "1");
  EXPECT_FALSE(std::filesystem::exists(file_));
  kill(child, SIGKILL);
  await(child);
  close(pipe[0]);
  close(pipe[1]);
  defaults.set("b", "2");
  EXPECT_TRUE(awaitStored({{"a", "1"}, {"b", "2"}}));
}

class UserDefaultsClientTest : public ::testing::Test {
 protected:
  struct Launch {
    std::optional<std::string> version;
    std::optional<std::string> userID = std::nullopt;
  };
  /// What one launch leaves; time is in seconds since 1970.
  std::string launch(int time, const Launch& launch) {
    const auto host = std::make_shared<headless::Host>(headless::Host::Options{.home = home_.path()});
    host->loop().setNow(Date(std::chrono::seconds(time)));
    host->deviceFacts().set("appVersion", launch.version ? json(*launch.version) : json());
    UserDefaultsClient client(std::make_shared<SdkContext>(host));
    std::string userID = client.recordLaunch(launch.userID);
    defaults_ = client.defaults();
    return userID;
  }
  std::optional<Date> at(int time) const { return Date(std::chrono::seconds(time)); }

  testing::TemporaryDirectory home_;
  std::shared_ptr<UserDefaults> defaults_;
};

TEST_F(UserDefaultsClientTest, RemembersInstallationUpdatesAndUser) {
  const std::string generated = launch(100, {"1.0"});
  EXPECT_EQ(generated.size(), 36U);
  EXPECT_EQ(defaults_->getAppInstallDate(), at(100));
  EXPECT_EQ(defaults_->getAppLastUpdateDate(), at(100));
  EXPECT_EQ(defaults_->string(settings_keys::appVersion), "1.0");

  EXPECT_EQ(launch(200, {"1.0"}), generated);
  EXPECT_EQ(defaults_->getAppLastUpdateDate(), at(100));

  EXPECT_EQ(launch(300, {"1.1", "abc"}), "abc");
  EXPECT_EQ(defaults_->getAppInstallDate(), at(100));
  EXPECT_EQ(defaults_->getAppLastUpdateDate(), at(300));
  EXPECT_EQ(defaults_->string(settings_keys::appVersion), "1.1");

  EXPECT_EQ(launch(400, {std::nullopt}), "abc");
  EXPECT_EQ(defaults_->string(settings_keys::appVersion), "1.1");
  EXPECT_EQ(launch(500, {"1.0", ""}), "") << "an empty id is an id";
  EXPECT_EQ(defaults_->getAppLastUpdateDate(), at(500));
}

TEST_F(UserDefaultsClientTest, WritesNoVersionWithoutOne) {
  launch(100, {std::nullopt});
  EXPECT_EQ(defaults_->getAppInstallDate(), at(100));
  EXPECT_EQ(defaults_->string(settings_keys::appVersion), std::nullopt);
  EXPECT_EQ(defaults_->getAppLastUpdateDate(), std::nullopt);
}

}  // namespace
}  // namespace vantorium
