#include "platform/foundation/console.hpp"

#include <pthread.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>

namespace vantorium {

namespace {

/// Keeps the SIGPIPE of a closed pipe from the application, whose end it would be. One that waits already is
/// the application's own and stays.
class BrokenPipeBlock {
 public:
  BrokenPipeBlock() noexcept {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigset_t waiting;
    sigpending(&waiting);
    wasWaiting_ = sigismember(&waiting, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~BrokenPipeBlock() {
    const timespec atOnce{};
    if (!wasWaiting_)
      while (sigtimedwait(&pipe_, nullptr, &atOnce) == -1 && errno == EINTR) {
      }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  BrokenPipeBlock(const BrokenPipeBlock&) = delete;
  BrokenPipeBlock& operator=(const BrokenPipeBlock&) = delete;

 private:
  sigset_t pipe_{}, before_{};
  bool wasWaiting_ = false;
};

}  // namespace

void printToConsole(std::string_view line) noexcept {
  const int before = errno;
  {
    const BrokenPipeBlock block;
    std::array<char, 1> end{'\n'};
    const std::array<iovec, 2> parts{iovec{const_cast<char*>(line.data()), line.size()},
                                     iovec{end.data(), end.size()}};
    while (::writev(STDERR_FILENO, parts.data(), parts.size()) == -1 && errno == EINTR) {
    }
  }
  errno = before;
}

}  // namespace vantorium
