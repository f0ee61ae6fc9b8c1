#include "archive/zip.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "archive/archive_cage.hpp"
#include "archive/zip_utilities.hpp"

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

TEST_F(ZipTest, LeavesNothingBehindWhenZippingFails) {
  writeBytes(archive(), "an earlier one");
  const auto error = Zip::zipFiles({source(), home_.path() / "gone"}, archive(), std::nullopt);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), ZipError::zipFail);
  EXPECT_NE(error->detail().find("gone"), std::string::npos) << error->detail();
  EXPECT_EQ(bytesOf(archive()), "an earlier one");
  EXPECT_EQ(Zip::zipFiles({}, archive(), std::nullopt)->code(), ZipError::zipFail);
  EXPECT_EQ(Zip::zipFiles({source()}, home_.path() / "no/out.zip", std::nullopt)->code(), ZipError::zipFail);
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
  EXPECT_EQ(missing.localizedDescription(), "File not found.");
  EXPECT_EQ(missing.errorMessage(), "File not found. There is none at /no/such.zip.");
  EXPECT_STREQ(ZipError(ZipError::unzipFail).description(), "Failed to unzip file.");
  EXPECT_STREQ(ZipError(ZipError::zipFail).description(), "Failed to zip file.");

  // The names in an archive may be anything; a text about them is one short line.
  writeBytes(home_.path() / "pages/line\nbreak\x1b[31m", "x");
  ASSERT_FALSE(zip());
  const Error refused = *Zip::unzipFile(archive(), destination(), true, {}, {}, {}, {.totalBytes = 300'000});
  EXPECT_NE(refused.errorMessage().find("\"pages/line\\x0abreak\\x1b[31m\""), std::string::npos)
      << refused.errorMessage();
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
