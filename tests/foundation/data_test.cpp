#include "platform/foundation/data.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <thread>
#include <vector>

#include "platform/foundation/files.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium {
namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& path) {
  std::optional<Error> error;
  return readFile(path, error).value_or("(no file)");
}

/// The file system of a folder; nothing when it is not there.
std::optional<dev_t> deviceOf(const fs::path& folder) {
  struct stat status {};
  if (::stat(folder.c_str(), &status) != 0) return std::nullopt;
  return status.st_dev;
}

class DataTest : public ::testing::Test {
 protected:
  /// A file of more than one copy step.
  std::optional<Data> spooled() {
    std::ofstream(spool) << text;
    std::optional<Error> error;
    return Data::adoptFile(spool, error);
  }
  std::size_t fileCount() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(directory.path()), {}));
  }

  const testing::TemporaryDirectory directory;
  const fs::path spool = directory.path() / "spool";
  const fs::path saved = directory.path() / "saved";
  const std::string text = std::string(3'000'000, 'a') + "end";
};

TEST_F(DataTest, ASpoolFileGoesWithTheLastCopy) {
  auto first = spooled();
  ASSERT_TRUE(first);
  {
    const Data second = *first;
    first.reset();
    EXPECT_EQ(second.bytes(), text);
    EXPECT_TRUE(fs::exists(spool));
  }
  EXPECT_FALSE(fs::exists(spool));
}

TEST_F(DataTest, SavingMovesTheSpoolFileOnceAndCopiesAfterThat) {
  std::ofstream(saved) << "old";
  {
    const auto data = spooled();
    ASSERT_TRUE(data);
    EXPECT_FALSE(data->write(saved));
    EXPECT_FALSE(fs::exists(spool));
    EXPECT_FALSE(Data(*data).write(directory.path() / "again"));
    fs::remove(saved);
    EXPECT_EQ(data->bytes(), text);  // whoever takes the file away, the bytes stay
    EXPECT_FALSE(data->write(saved));
  }
  EXPECT_EQ(contentOf(saved), text);
  EXPECT_EQ(contentOf(directory.path() / "again"), text);
  EXPECT_EQ(fileCount(), 2U);
}

TEST_F(DataTest, AFailedSaveKeepsBothTheBytesAndTheOldFile) {
  fs::create_directory(directory.path() / "folder");
  const auto data = spooled();
  ASSERT_TRUE(data);
  EXPECT_EQ(data->write(directory.path() / "folder")->domain(), "posix");
  EXPECT_EQ(data->write(directory.path() / "missing" / "file")->code(), ENOENT);
  EXPECT_FALSE(data->write(saved));
  EXPECT_EQ(contentOf(saved), text);
  EXPECT_EQ(fileCount(), 2U);  // the folder and the saved file: nothing half-written
}

TEST_F(DataTest, AnEmptiedSpoolFolderLosesNothing) {
  const auto data = spooled();
  ASSERT_TRUE(data);
  fs::remove(spool);
  EXPECT_FALSE(data->write(saved));
  EXPECT_EQ(contentOf(saved), text);
}

TEST_F(DataTest, CopiesAcrossFileSystems) {
  const std::vector<fs::path> candidates{"/dev/shm", "/var/tmp", fs::current_path()};
  const auto folder = std::find_if(candidates.begin(), candidates.end(), [&](const fs::path& candidate) {
    return deviceOf(candidate) && deviceOf(candidate) != deviceOf(directory.path());
  });
  ASSERT_NE(folder, candidates.end()) << "this test needs a folder on another file system, such as /dev/shm";
  const fs::path elsewhere = *folder / ("vantorium-data-test-" + directory.path().filename().string());
  const auto data = spooled();
  ASSERT_TRUE(data);
  EXPECT_FALSE(data->write(elsewhere));
  EXPECT_EQ(contentOf(elsewhere), text);
  EXPECT_FALSE(data->write(saved));
  EXPECT_EQ(contentOf(saved), text);
  fs::remove(elsewhere);
}

TEST_F(DataTest, ManyThreadsSaveAtOnce) {
  const auto data = spooled();
  ASSERT_TRUE(data);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, copy = *data, i] {
      EXPECT_FALSE(copy.write(saved));
      EXPECT_FALSE(copy.write(directory.path() / std::to_string(i)));
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(contentOf(saved), text);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(contentOf(directory.path() / std::to_string(i)), text);
  EXPECT_EQ(fileCount(), 5U);
}

TEST_F(DataTest, NoBytesAreData) {
  std::ofstream(spool).flush();
  std::optional<Error> error;
  const auto data = Data::adoptFile(spool, error);
  ASSERT_TRUE(data);
  EXPECT_EQ(data->size(), 0U);
  EXPECT_FALSE(data->write(saved));
  EXPECT_EQ(contentOf(saved), "");
  EXPECT_FALSE(Data::adoptFile(spool, error));
  EXPECT_EQ(error->code(), ENOENT);
}

}  // namespace
}  // namespace vantorium
