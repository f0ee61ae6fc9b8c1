#pragma once

#include <pthread.h>

#include <csignal>

namespace vantorium {

/// Keeps signals away from threads started in its scope, so that the application's handlers never run on the
/// SDK's threads and a peer that hangs up raises no SIGPIPE there. Crashes and profilers still get through.
class SignalBlock {
 public:
  SignalBlock() {
    sigset_t blocked;
    sigfillset(&blocked);
    for (const int passing : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS, SIGPROF}) {
      sigdelset(&blocked, passing);
    }
    pthread_sigmask(SIG_BLOCK, &blocked, &before_);
  }
  ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace vantorium
