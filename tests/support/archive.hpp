#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "archive/zip.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium::testing {

/// The bytes of an archive of these files: their paths and what they hold.
inline std::string archiveOf(const std::map<std::string, std::string>& files) {
  const TemporaryDirectory folder;
  const std::filesystem::path content = folder.path() / "content";
  for (const auto& [name, text] : files) {
    std::filesystem::create_directories((content / name).parent_path());
    std::ofstream(content / name) << text;
  }
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(content)) paths.push_back(entry.path());
  EXPECT_FALSE(Zip::zipFiles(paths, folder.path() / "made.zip", std::nullopt));
  return contentOf(folder.path() / "made.zip");
}

}  // namespace vantorium::testing
