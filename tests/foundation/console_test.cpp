#include "platform/foundation/console.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>

#include <vantorium/headless.hpp>

#include "platform/foundation/file_descriptor.hpp"

namespace vantorium {
namespace {

/// Has something else stand for standard error.
class StandardError {
 public:
  explicit StandardError(int other) : before_(::dup(STDERR_FILENO)) { ::dup2(other, STDERR_FILENO); }
  ~StandardError() { ::dup2(before_.get(), STDERR_FILENO); }

 private:
  FileDescriptor before_;
};

TEST(ConsoleTest, ALineIsOneWrite) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe2(ends.data(), O_DIRECT), 0);  // keeps writes apart
  const FileDescriptor reader(ends[0]), writer(ends[1]);
  {
    const StandardError redirected(writer.get());
    printToConsole("one line");
    printToConsole("");
  }
  std::array<char, 64> text{};
  EXPECT_EQ(::read(reader.get(), text.data(), text.size()), 9);
  EXPECT_EQ(std::string(text.data()), "one line\n");
  EXPECT_EQ(::read(reader.get(), text.data(), text.size()), 1);
}

TEST(ConsoleTest, ASinkThatTakesNothingIsNoReasonToFail) {
  const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  ::close(ends[0]);
  const FileDescriptor closed(ends[1]);
  const auto before = std::signal(SIGPIPE, SIG_DFL);  // it would end this program
  for (const int sink : {full.get(), closed.get()}) {
    const StandardError redirected(sink);
    printToConsole("a line");
    EXPECT_EQ(headless::makeHost({.home = "/dev/null/home"}), nullptr);
  }
  std::signal(SIGPIPE, before);
}

}  // namespace
}  // namespace vantorium
