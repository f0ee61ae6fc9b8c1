// Each archive of a corpus ends as it must, leaves everything beside the destination alone and leaks nothing.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "archive/archive_cage.hpp"
#include "archive/zip.hpp"

namespace vantorium {
namespace {

using testing::bytesOf;
namespace fs = std::filesystem;

class ArchiveCorpus : public ::testing::Test {
 protected:
  void SetUp() override {
    mask_ = ::umask(027);
    const std::string script = VANTORIUM_SOURCE_DIR "/tests/archive/make_corpus.py";
    const std::string folders = corpus_.path().string() + " " + cage_.path().string();
    ASSERT_TRUE(testing::runPython(script + " " + folders));
    cases_ = nlohmann::json::parse(bytesOf(corpus_.path() / "manifest.json"));
  }
  void TearDown() override { ::umask(mask_); }

  std::string check(const nlohmann::json& rules);
  void checkFiles(const nlohmann::json& rules) const;

  testing::TemporaryDirectory corpus_;
  testing::ArchiveCage cage_;
  nlohmann::json cases_;

 private:
  std::optional<ZipError> unzip(const nlohmann::json& rules, const fs::path& archive) const;

  mode_t mask_ = 0;
};

std::optional<ZipError> ArchiveCorpus::unzip(const nlohmann::json& rules, const fs::path& archive) const {
  const std::string place = rules.value("destination", "");
  std::optional<std::string> password;
  if (rules.contains("password") && rules["password"].is_string()) password = rules["password"];
  std::optional<testing::FullDisk> disk;
  if (place == "full") disk.emplace();
  const fs::path destination = place == "below a file" ? archive / "folder" : cage_.destination();
  return Zip::unzipFile(archive, destination, rules.value("overwrite", true), password, {}, {},
                        {.entries = rules.value("entries", ZipLimits().entries)});
}

void ArchiveCorpus::checkFiles(const nlohmann::json& rules) const {
  for (const auto& [name, content] : rules["files"].items()) {
    const bool isMode = name.starts_with("mode:");
    const fs::path file = cage_.destination() / (isMode ? name.substr(5) : name);
    if (content.is_null()) {
      EXPECT_FALSE(fs::exists(fs::symlink_status(file))) << file;
    } else if (isMode) {
      EXPECT_EQ(fmt::format("{:o}", static_cast<unsigned>(fs::status(file).permissions())), content) << file;
    } else {
      EXPECT_EQ(bytesOf(file), content.get<std::string>()) << file;
      EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file))) << file;
    }
  }
  for (const auto& entry : fs::recursive_directory_iterator(cage_.destination()))
    EXPECT_FALSE(entry.path().filename().string().starts_with(".vantorium-")) << "left behind";
}

std::string ArchiveCorpus::check(const nlohmann::json& rules) {
  const std::string name = rules["archive"];
  cage_.reset();
  const fs::path archive = cage_.destination() / name;
  fs::copy_file(corpus_.path() / name, archive);
  const auto place = rules.value("place", nlohmann::json::object());
  for (const auto& [thing, what] : place.items()) cage_.place(thing, what);

  const long descriptors = testing::openDescriptors();
  const auto error = unzip(rules, archive);
  EXPECT_EQ(testing::openDescriptors(), descriptors);
  EXPECT_EQ(cage_.bytesOutside(), 0U);
  EXPECT_EQ(bytesOf(archive), bytesOf(corpus_.path() / name)) << "the archive itself was changed";
  EXPECT_EQ(error ? (error->code() == ZipError::fileNotFound ? "fileNotFound" : "unzipFail") : "ok",
            rules["ends"])
      << (error ? error->detail() : "");
  const std::string detail = error ? error->detail() : "";
  EXPECT_NE(detail.find(rules.value("says", "")), std::string::npos) << detail;
  checkFiles(rules);

  std::string happened = error ? error->description() + (" " + error->detail()) : "Extracted.";
  happened = std::regex_replace(happened, std::regex(R"([/\\]tmp[/\\]vantorium-\w+)"), "/absolute");
  return fmt::format("| {} | {} | {} | {} |\n", name, rules["tries"].get<std::string>(), happened,
                     cage_.bytesOutside());
}

TEST_F(ArchiveCorpus, EndsAsItMustAndStaysInside) {
  EXPECT_GE(cases_.size(), 100U);
  std::string table = "| archive | what it tries | what happened | bytes outside |\n|---|---|---|---|\n";
  for (const auto& rules : cases_) {
    SCOPED_TRACE(rules["archive"].get<std::string>());
    table += check(rules);
  }
  fmt::print("{}", table);
}

TEST_F(ArchiveCorpus, FailsWhereverItIsCutOff) {
  for (const char* const name : {"encrypted-deflated.zip", "backslash.zip", "descriptor.zip"}) {
    const std::string whole = bytesOf(corpus_.path() / name);
    const long descriptors = testing::openDescriptors();
    for (std::size_t size = 0; size < whole.size(); ++size) {
      const fs::path archive = cage_.path() / "cut.zip";
      testing::writeBytes(archive, whole.substr(0, size));
      const auto error = Zip::unzipFile(archive, cage_.destination(), true, "secret");
      ASSERT_TRUE(error && error->code() == ZipError::unzipFail) << name << " cut to " << size;
    }
    EXPECT_EQ(testing::openDescriptors(), descriptors);
  }
}

TEST_F(ArchiveCorpus, SurvivesAnyByteBeingWrong) {
  const std::string whole = bytesOf(corpus_.path() / "backslash.zip");
  ASSERT_FALSE(Zip::unzipFile(corpus_.path() / "backslash.zip", cage_.destination(), true));
  const std::string content = bytesOf(cage_.destination() / "x/y.txt");
  for (std::size_t at = 0; at < whole.size(); ++at) {
    cage_.reset();
    std::string damaged = whole;
    damaged[at] = static_cast<char>(~damaged[at]);
    const fs::path archive = cage_.destination() / "damaged.zip";
    testing::writeBytes(archive, damaged);
    Zip::unzipFile(archive, cage_.destination(), true);
    ASSERT_EQ(cage_.bytesOutside(), 0U) << "byte " << at;
    // The file is there as it was, under some name, or not at all.
    for (const auto& entry : fs::recursive_directory_iterator(cage_.destination())) {
      if (!entry.is_regular_file() || entry.path() == archive) continue;
      ASSERT_EQ(bytesOf(entry.path()), content) << "byte " << at;
    }
  }
}

}  // namespace
}  // namespace vantorium
