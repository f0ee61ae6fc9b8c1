#include "archive/zip.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <latch>
#include <thread>

#include "archive/archive_cage.hpp"
#include "archive/zip_utilities.hpp"
#include "platform/foundation/worker_pool.hpp"

namespace vantorium {
namespace {

using testing::bytesOf;
using testing::writeBytes;
namespace fs = std::filesystem;

class ZipTest : public ::testing::Test {
 protected:
  /// A folder with a text, a file that deflates badly and one without bytes.
  ZipTest() {
    writeBytes(source() / "a.txt", std::string(100'000, 'a'));
    std::string noise;
    for (unsigned seed = 1; noise.size() < 200'000; seed = seed * 1664525U + 1013904223U)
      noise += static_cast<char>(seed >> 24U);
    writeBytes(source() / "b/noise.bin", noise);
    writeBytes(source() / "b/empty", "");
    fs::permissions(source() / "a.txt", fs::perms(0640));
    fs::create_symlink("/etc/passwd", source() / "b/link");
  }

  fs::path source() const { return home_.path() / "pages"; }
  fs::path archive() const { return home_.path() / "out.zip"; }
  fs::path destination() const { return home_.path() / "dest"; }

  std::optional<ZipError> zip(const std::optional<std::string>& password = std::nullopt,
                              ZipCompression compression = ZipCompression::defaultCompression) const {
    return Zip::zipFiles({source()}, archive(), password, compression);
  }

  void expectSame(const fs::path& folder) const {
    for (const char* const name : {"a.txt", "b/noise.bin", "b/empty"})
      EXPECT_TRUE(fs::exists(folder / name) && bytesOf(folder / name) == bytesOf(source() / name)) << name;
    EXPECT_FALSE(fs::exists(folder / "b/link"));
    EXPECT_EQ(fs::status(folder / "a.txt").permissions(), fs::perms(0640));
  }

  testing::TemporaryDirectory home_;
};

TEST_F(ZipTest, MakesArchivesThatItAndOthersRead) {
  std::vector<std::uintmax_t> sizes;
  std::string check =
      "-c \"import sys, zipfile\nfor path in sys.argv[1:]:\n  archive = zipfile.ZipFile(path)\n"
      "  archive.setpassword(b'secret')\n  assert archive.testzip() is None, path\"";
  for (const auto compression : {ZipCompression::noCompression, ZipCompression::bestSpeed,
                                 ZipCompression::defaultCompression, ZipCompression::bestCompression}) {
    for (const std::optional<std::string>& password : {std::optional<std::string>(), {"secret"}}) {
      ASSERT_FALSE(zip(password, compression));
      fs::remove_all(destination());
      const auto error = Zip::unzipFile(archive(), destination(), true, password);
      EXPECT_FALSE(error) << error->detail();
      expectSame(destination() / "pages");
      sizes.push_back(fs::file_size(archive()));
      fs::rename(archive(), home_.path() / std::to_string(sizes.size()));
      check += " " + (home_.path() / std::to_string(sizes.size())).string();
    }
  }
  EXPECT_TRUE(testing::runPython(check));
  EXPECT_GT(sizes[0], 300'000U);
  EXPECT_GT(sizes[2], sizes[6]);
}

// What is inflated last may not fit any more when all that is stored has been read.
TEST_F(ZipTest, ReadsStreamsThatEndJustPastABuffer) {
  const fs::path many = home_.path() / "many";
  for (std::size_t number = 0; number < 44; ++number) {
    const std::string beginning = "0123456789abcdefghijk";
    std::string text = beginning.substr(0, number % 7 * 3);
    text.resize((1 + number % 2) * 262144 + number * 6, 'a');
    writeBytes(many / std::to_string(number), text);
  }
  ASSERT_FALSE(Zip::zipFiles({many}, archive(), std::nullopt));
  const auto error = Zip::unzipFile(archive(), destination(), true, {}, {}, {}, {.compressionRatio = 1100});
  ASSERT_FALSE(error) << error->detail();
  for (const auto& file : fs::directory_iterator(many))
    EXPECT_TRUE(bytesOf(destination() / "many" / file.path().filename()) == bytesOf(file.path())) << file;
}

TEST_F(ZipTest, LeavesNothingBehindWhenZippingFails) {
  writeBytes(archive(), "an earlier one");
  const auto error = Zip::zipFiles({source(), home_.path() / "gone"}, archive(), std::nullopt);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), ZipError::zipFail);
  EXPECT_NE(error->detail().find("gone"), std::string::npos) << error->detail();
  EXPECT_EQ(bytesOf(archive()), "an earlier one");
  EXPECT_EQ(Zip::zipFiles({}, archive(), std::nullopt)->code(), ZipError::zipFail);
  EXPECT_EQ(Zip::zipFiles({source()}, home_.path() / "no/out.zip", std::nullopt)->code(), ZipError::zipFail);
  {
    const testing::FullDisk disk;
    const auto full = zip();
    ASSERT_TRUE(full);
    EXPECT_NE(full->detail().find("File too large"), std::string::npos) << full->detail();
  }
  EXPECT_EQ(bytesOf(archive()), "an earlier one");
  EXPECT_EQ(std::distance(fs::directory_iterator(home_.path()), {}), 2) << "pages and out.zip";

  // In the folder that it is made of, it does not hold its former self.
  const fs::path inside = source() / "out.zip";
  ASSERT_FALSE(Zip::zipFiles({source()}, inside, std::nullopt));
  ASSERT_FALSE(Zip::zipFiles({source()}, inside, std::nullopt));
  ASSERT_FALSE(Zip::unzipFile(inside, destination(), true));
  EXPECT_FALSE(fs::exists(destination() / "pages/out.zip"));
}

TEST_F(ZipTest, QuickOnesChooseTheirPlace) {
  std::optional<ZipError> error;
  std::vector<double> parts;
  const auto made = Zip::quickZipFiles(
      {source() / "a.txt", source() / "b"}, "quick", [&](double part) { parts.push_back(part); }, error);
  ASSERT_TRUE(made && !error);
  EXPECT_EQ(*made, source() / "quick.zip");
  const auto folder = Zip::quickUnzipFile(*made, {}, error);
  ASSERT_TRUE(folder && !error);
  EXPECT_EQ(*folder, source() / "quick");
  expectSame(*folder);
  EXPECT_TRUE(std::ranges::is_sorted(parts));
  EXPECT_EQ(parts.back(), 1.0);
  EXPECT_FALSE(Zip::quickUnzipFile(source() / "none.zip", {}, error));
  EXPECT_EQ(error->code(), ZipError::fileNotFound);
}

TEST_F(ZipTest, TellsWhatItDoes) {
  ASSERT_FALSE(zip());
  std::vector<double> parts;
  std::vector<fs::path> paths;
  ASSERT_FALSE(Zip::unzipFile(
      archive(), destination(), true, std::nullopt, [&](double part) { parts.push_back(part); },
      [&](const fs::path& path) { paths.push_back(path.lexically_relative(destination())); }));
  EXPECT_EQ(paths, (std::vector<fs::path>{"pages/a.txt", "pages/b/empty", "pages/b/noise.bin"}));
  ASSERT_EQ(parts.size(), 4U);
  EXPECT_TRUE(std::ranges::is_sorted(parts));
  EXPECT_LT(parts[1], 0.1);
  EXPECT_LT(parts[2], 1.0);
  EXPECT_EQ(parts[3], 1.0);
}

TEST_F(ZipTest, TellsInOrderOnTheCallersThreadWhoeverUnpacks) {
  std::vector<fs::path> expected;
  for (int number = 0; number < 300; ++number) {
    const std::string name = std::to_string(1000 + number);
    writeBytes(home_.path() / "many" / name, std::string(number % 50 == 0 ? 900'000 : number, 'a'));
    expected.push_back(destination() / "many" / name);
  }
  ASSERT_FALSE(Zip::zipFiles({home_.path() / "many"}, archive(), std::nullopt));
  const auto unpack = [&] {
    std::vector<fs::path> told;
    const auto thread = std::this_thread::get_id();
    const auto check = [&](const fs::path& path) {
      EXPECT_EQ(std::this_thread::get_id(), thread);
      EXPECT_TRUE(fs::exists(path)) << path;
      told.push_back(path);
    };
    EXPECT_FALSE(Zip::unzipFile(archive(), destination(), true, {}, {}, check));
    EXPECT_EQ(told, expected);
  };
  unpack();

  // All workers but one are busy until that one, which is the caller, is done.
  std::promise<void> isDone;
  const auto done = isDone.get_future().share();
  std::atomic<bool> isTaken = false;
  std::latch left(16);
  for (int number = 0; number < 16; ++number) {
    workers::async([&] {
      if (!isTaken.exchange(true)) {
        unpack();
        isDone.set_value();
      }
      done.wait();
      left.count_down();
    });
  }
  left.wait();
}

TEST_F(ZipTest, SaysWhatItIsShortOf) {
  for (const char* const name : {"c/1", "c/2", "d/e/f/3", "d/4"}) writeBytes(source() / name, "text");
  ASSERT_FALSE(zip());
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  const long open = testing::openDescriptors();
  const auto unzipWith = [&](long descriptors) {
    fs::remove_all(destination());
    rlimit small = before;
    small.rlim_cur = static_cast<rlim_t>(descriptors);
    ::setrlimit(RLIMIT_NOFILE, &small);
    auto error = Zip::unzipFile(archive(), destination(), true);
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(testing::openDescriptors(), open);
    return error;
  };
  long descriptors = 3;
  for (auto error = unzipWith(descriptors); error; error = unzipWith(++descriptors)) {
    ASSERT_NE(error->detail().find("Too many open files"), std::string::npos) << error->detail();
    ASSERT_LT(descriptors, open + 100);
  }
  EXPECT_GT(descriptors, 3);
  expectSame(destination() / "pages");
}

TEST_F(ZipTest, CountsWhileItInflates) {
  ASSERT_FALSE(zip());
  const auto detail = [this](const ZipLimits& limits) {
    fs::remove_all(destination());
    const auto error = Zip::unzipFile(archive(), destination(), true, std::nullopt, {}, {}, limits);
    return error ? error->detail() : "";
  };
  EXPECT_EQ(detail({.entries = 3, .totalBytes = 300'000}), "");
  EXPECT_NE(detail({.totalBytes = 299'999}).find("over 299999 bytes"), std::string::npos);
  EXPECT_TRUE(fs::exists(destination() / "pages/a.txt")) << "what was complete stays";
  EXPECT_FALSE(fs::exists(destination() / "pages/b/noise.bin"));
  EXPECT_NE(detail({.entries = 2}).find("more than 2 entries"), std::string::npos);
  EXPECT_NE(detail({.nameBytes = 16}).find("too long"), std::string::npos);
  EXPECT_EQ(detail({.nameBytes = 17}), "");
  EXPECT_NE(detail({.compressionRatio = 1, .ratioFreeBytes = 100}).find("1 times"), std::string::npos);
  EXPECT_EQ(detail({.compressionRatio = 1, .ratioFreeBytes = 300'000}), "");
}

TEST_F(ZipTest, GivesUpWhenAsked) {
  ASSERT_FALSE(zip());
  int asked = 0;
  const auto error =
      Zip::unzipFile(archive(), destination(), true, {}, {}, {}, {}, [&] { return ++asked > 2; });
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), ZipError::unzipFail);
  EXPECT_NE(error->detail().find("given up"), std::string::npos);
  EXPECT_EQ(asked, 3);
}

TEST_F(ZipTest, TakesArchivesByTheirExtension) {
  ASSERT_FALSE(zip());
  const fs::path capitals = home_.path() / "out.ZIP";
  fs::rename(archive(), capitals);
  const auto error = Zip::unzipFile(capitals, destination(), true);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), ZipError::fileNotFound);
  EXPECT_FALSE(fs::exists(destination()));

  Zip::addCustomFileExtension("ZIP");
  EXPECT_FALSE(Zip::unzipFile(capitals, destination(), true));
  EXPECT_EQ(Zip::customFileExtensions(), std::set<std::string>{"ZIP"});
  Zip::removeCustomFileExtension("ZIP");
  EXPECT_FALSE(Zip::isValidFileExtension("ZIP"));
  EXPECT_TRUE(Zip::isValidFileExtension("zip") && Zip::isValidFileExtension("cbz"));

  fs::create_directory(home_.path() / "folder.zip");
  EXPECT_EQ(Zip::unzipFile(home_.path() / "folder.zip", destination(), true)->code(), ZipError::unzipFail);
  ASSERT_EQ(::mkfifo((home_.path() / "pipe.zip").c_str(), 0600), 0);
  EXPECT_EQ(Zip::unzipFile(home_.path() / "pipe.zip", destination(), true)->code(), ZipError::unzipFail);
}

TEST_F(ZipTest, BecomesAnErrorOfTheSDK) {
  const Error missing = *Zip::unzipFile("/no/such.zip", destination(), true);
  EXPECT_EQ(missing.domain(), "com.vantorium.zip");
  EXPECT_EQ(missing.code(), ZipError::fileNotFound);
  EXPECT_EQ(missing.localizedDescription(), missing.errorMessage());
  EXPECT_EQ(missing.errorMessage(), "File not found. There is none at /no/such.zip.");
  EXPECT_STREQ(ZipError(ZipError::unzipFail).description(), "Failed to unzip file.");
  EXPECT_STREQ(ZipError(ZipError::zipFail).description(), "Failed to zip file.");

  // The names in an archive may be anything; a text about them is one short line.
  writeBytes(home_.path() / "pages/line\nbreak\x1b[31m", "x");
  ASSERT_FALSE(zip());
  const Error refused = *Zip::unzipFile(archive(), destination(), true, {}, {}, {}, {.totalBytes = 300'000});
  EXPECT_TRUE(
      refused.localizedDescription().starts_with("Failed to unzip file. out.zip: Entry \"pages/line"));
  EXPECT_NE(refused.localizedDescription().find("\"pages/line\\x0abreak\\x1b[31m\""), std::string::npos)
      << refused.localizedDescription();
}

TEST_F(ZipTest, RunsOnSeveralThreadsAtATime) {
  ASSERT_FALSE(zip());
  std::vector<std::jthread> threads;
  threads.reserve(4);
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([this, number] {
      Zip::addCustomFileExtension(std::to_string(number));
      // The same destination: each file is that of one of them, complete.
      EXPECT_FALSE(Zip::unzipFile(archive(), destination(), true));
      Zip::removeCustomFileExtension(std::to_string(number));
    });
  }
  threads.clear();
  expectSame(destination() / "pages");
}

}  // namespace
}  // namespace vantorium
