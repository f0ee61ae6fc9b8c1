// The catalogue's playable creatives: sources, archive and tag belong together.
#include <gtest/gtest.h>
#include <minizip/unzip.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <regex>
#include <string>

#include "sandbox/service/catalogue.hpp"

namespace vantorium::sandbox {
namespace {

namespace fs = std::filesystem;
using Files = std::map<std::string, std::string>;  // contents by path

const fs::path catalogueFolder = fs::path(VANTORIUM_SOURCE_DIR) / "tools/sandbox/catalogue";

Files filesBelow(const fs::path& folder) {
  Files files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path(), std::ios::binary);
    files[entry.path().lexically_relative(folder).generic_string()] = {std::istreambuf_iterator<char>(file),
                                                                       std::istreambuf_iterator<char>()};
  }
  return files;
}

// Empty when the archive is not whole.
Files filesIn(const fs::path& archive) {
  const std::unique_ptr<void, decltype(&unzClose)> zip(unzOpen64(archive.c_str()), &unzClose);
  Files files;
  if (!zip) return files;
  for (int code = unzGoToFirstFile(zip.get()); code == UNZ_OK; code = unzGoToNextFile(zip.get())) {
    unz_file_info64 information{};
    std::string name(256, '\0');
    unzGetCurrentFileInfo64(zip.get(), &information, name.data(), name.size(), nullptr, 0, nullptr, 0);
    std::string content(information.uncompressed_size, '\0');
    unzOpenCurrentFile(zip.get());
    const int size = unzReadCurrentFile(zip.get(), content.data(), static_cast<unsigned>(content.size()));
    if (unzCloseCurrentFile(zip.get()) != UNZ_OK || size != static_cast<int>(content.size())) return {};
    files[name.c_str()] = content;
  }
  return files;
}

TEST(SandboxPlayable, ArchivesArePackedFromTheirSources) {
  for (const auto& source : fs::directory_iterator(catalogueFolder / "playable-src")) {
    const std::string name = source.path().filename();
    const Files packed = filesIn(catalogueFolder / "playable" / name / "game.zip");
    EXPECT_TRUE(packed == filesBelow(source)) << name << " has changed: run catalogue/pack_playables.py";
    EXPECT_FALSE(packed.empty()) << name << ": an archive without a file cannot be unpacked";
    for (const auto& [path, content] : packed) {
      const fs::path inside = path;
      EXPECT_TRUE(inside.is_relative() && inside == inside.lexically_normal()) << path;
      EXPECT_EQ(path.find_first_of("\\:"), std::string::npos) << path;
      EXPECT_NE(*inside.begin(), "..") << path;
      EXPECT_FALSE(inside.extension().string().starts_with(".htm"))
          << path << " could be taken for the page, which is the tag";
    }
  }
}

TEST(SandboxPlayable, TagsFindTheirFiles) {
  Catalogue catalogue(catalogueFolder);
  catalogue.setBaseURL("http://host");
  for (const char* placement : {"playable-rewarded", "playable-portrait", "html-plain"}) {
    const nlohmann::json campaign = catalogue.campaigns(placement)->front();
    const std::string base = campaign["baseUrl"];
    const std::string zipped = campaign["zippedUrl"];
    const fs::path below = fs::path(zipped.substr(base.size())).parent_path();
    Files unpacked;
    for (const auto& [path, content] : filesIn(catalogueFolder / "playable" / below / "game.zip")) {
      unpacked[below / path] = content;
    }
    const std::string tag = campaign["tag"];
    const std::regex reference("(?:src|href)=\"([^\":]+)\"");  // those with a colon are commands
    for (std::sregex_iterator found(tag.begin(), tag.end(), reference), end; found != end; ++found) {
      EXPECT_TRUE(unpacked.contains((*found)[1])) << placement << ": " << (*found)[1];
    }
    std::string commands = tag;
    for (const auto& [path, content] : unpacked) commands += content;
    EXPECT_NE(commands.find("\"reportclick://"), std::string::npos) << placement;
    EXPECT_NE(commands.find("\"closead://"), std::string::npos) << placement;
  }
}

}  // namespace
}  // namespace vantorium::sandbox
