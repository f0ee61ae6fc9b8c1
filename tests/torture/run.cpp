#include "torture/run.hpp"

#include <execinfo.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <new>
#include <sstream>

namespace vantorium::torture {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds longestRun{60};

Record* own = nullptr;  // the record of this process

/// Notes where it happened, and lets it happen.
void noteSignal(int signal) {
  disarm();
  own->signal = signal;
  own->depth = backtrace(own->frames.data(), static_cast<int>(own->frames.size()));
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void watchSignals() {
  for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGQUIT})
    std::signal(signal, &noteSignal);
}

Record* makeRecord() {
  void* const memory =
      mmap(nullptr, sizeof(Record), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return new (memory) Record;
}

void perform(const Scenario& scenario, const Setting& setting, const fs::path& home, Record& record) {
  const Exempt driver;
  Stage stage(home, setting, record);
  if (!scenario.prepare(stage)) stage.note("the work could not be prepared");
  arm();
  record.hasSucceeded = scenario.work(stage);
  disarm();
  if (!record.hasSucceeded && !record.order.isReached)
    stage.note("fails without a fault: " + stage.lastError());
  stage.checkFlags();
  if (!scenario.work(stage)) stage.note("the same work fails again, without a fault: " + stage.lastError());
  stage.checkFlags();
  stage.checkEnd();
  record.hasEnded = true;
}

}  // namespace

Run::Run(const Scenario& scenario, const Setting& setting, const Fault& fault, std::uint64_t number,
         const fs::path& folder)
    : fault_(fault), number_(number), home_(folder), record_(makeRecord()) {
  record_->order.fault = fault;
  record_->order.number = number;
  const fs::path home = home_ / "home";
  fs::create_directories(home);
  home.string().copy(record_->order.home.data(), record_->order.home.size() - 1);
  process_ = fork();
  if (process_ != 0) return;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  own = record_;
  const int complaints = ::open((home_ / "stderr").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  dup2(complaints, STDERR_FILENO);
  dup2(complaints, STDOUT_FILENO);
  close(complaints);
  watchSignals();
  prepare(record_->order);
  perform(scenario, setting, home, *record_);
  _exit(0);
}

Run::~Run() {
  std::error_code ignored;
  fs::remove_all(home_, ignored);
  munmap(record_, sizeof(Record));
}

std::string Run::complaints() const {
  std::ostringstream text;
  text << std::ifstream(home_ / "stderr").rdbuf();
  return text.str();
}

void Run::endIfOverdue() {
  const auto age = std::chrono::steady_clock::now() - started_;
  if (age > longestRun) kill(process_, age > 2 * longestRun ? SIGKILL : SIGQUIT);
}

void Run::ended(int status) {
  if (WIFSIGNALED(status)) record_->signal = WTERMSIG(status);
}

}  // namespace vantorium::torture
