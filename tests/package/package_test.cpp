// What the package promises: the symbols that the shared libraries show, and one version everywhere.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include <vantorium/vantorium.h>
#include <vantorium/version.h>

namespace vantorium {
namespace {

const std::string root = VANTORIUM_SOURCE_DIR;

#ifdef VANTORIUM_BUILD_WITH_SHARED_LIBRARIES
TEST(Package, ExportsTheSymbolsAgreedOn) {
  const std::string command = root + "/scripts/symbols check " VANTORIUM_BUILD_WITH_SHARED_LIBRARIES " 2>&1";
  FILE* const pipe = popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string said;
  std::array<char, 4096> piece{};
  while (std::fgets(piece.data(), piece.size(), pipe) != nullptr) said += piece.data();
  EXPECT_EQ(pclose(pipe), 0) << said;
}
#endif

TEST(Package, HasOneVersion) {
  EXPECT_STREQ(vantorium_version(), VANTORIUM_VERSION);
  std::ifstream manifest(root + "/packaging/vcpkg/vantorium/vcpkg.json");
  const auto port = nlohmann::json::parse(manifest, nullptr, false);
  ASSERT_TRUE(port.is_object());
  EXPECT_EQ(port.value("version", ""), VANTORIUM_VERSION) << "in packaging/vcpkg/vantorium/vcpkg.json";
}

}  // namespace
}  // namespace vantorium
