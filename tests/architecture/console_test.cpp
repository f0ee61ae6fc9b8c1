// Nothing but the application writes to its standard output, and what goes to standard error takes one way.
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <string>

namespace vantorium {
namespace {

bool isWordCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

bool writesByItself(const std::string& line) {
  const auto begin = line.find_first_not_of(' ');
  if (begin == std::string::npos || line[begin] == '*' || line.compare(begin, 2, "//") == 0) return false;
  for (const std::string word :
       {"cout <<", "cerr <<", "clog <<", "stdout", "stderr", "STDOUT_FILENO", "STDERR_FILENO", "fmt::print(",
        "printf(", "fprintf(", "puts(", "fputs(", "putchar(", "perror(", "g_print(", "g_printerr("}) {
    for (auto at = line.find(word); at != std::string::npos; at = line.find(word, at + 1))
      if (at == 0 || !isWordCharacter(line[at - 1])) return true;
  }
  return false;
}

TEST(Console, IsWrittenToInOnePlace) {
  const std::filesystem::path root = VANTORIUM_SOURCE_DIR;
  int places = 0;
  for (const char* const folder : {"src", "hosts", "bindings"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / folder)) {
      const auto extension = entry.path().extension();
      if (extension != ".hpp" && extension != ".cpp") continue;
      std::ifstream text(entry.path());
      int number = 0;
      for (std::string line; std::getline(text, line);) {
        ++number;
        if (!writesByItself(line)) continue;
        ++places;
        EXPECT_EQ(entry.path().filename(), "console.cpp")
            << entry.path() << ":" << number << " writes by itself: use printToConsole";
      }
    }
  }
  EXPECT_EQ(places, 1);
}

TEST(Console, WritersAreFound) {
  for (const char* const line : {"  fmt::print(\"x\");", "std::cout << 1;", "std::fputs(text, stdout);",
                                 "  puts(\"x\");", "std::printf(\"x\");", "g_print(\"x\");"}) {
    EXPECT_TRUE(writesByItself(line)) << line;
  }
  for (const char* const line :
       {"std::snprintf(buffer, size, \"x\");", "host().print(line);", " *  puts(text);", "inputs(x);"}) {
    EXPECT_FALSE(writesByItself(line)) << line;
  }
}

}  // namespace
}  // namespace vantorium
