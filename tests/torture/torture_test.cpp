#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string>

namespace vantorium {
namespace {

#ifdef VANTORIUM_TORTURE

// One number of each fault in each scenario; scripts/torture plays them all.
TEST(Torture, SurvivesASampleOfFaults) {
  std::FILE* const output = ::popen(VANTORIUM_TORTURE " --short", "r");
  ASSERT_NE(output, nullptr);
  std::string report;
  std::array<char, 4096> block{};
  for (std::size_t count; (count = std::fread(block.data(), 1, block.size(), output)) > 0;)
    report.append(block.data(), count);
  const int status = ::pclose(output);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << report;
}

#endif

}  // namespace
}  // namespace vantorium
