// Plays scenarios of the SDK over and over, with one more operation failing each time, until a run ends
// without its fault. See scripts/torture.
#include <execinfo.h>
#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <thread>

#include "sandbox/server.hpp"
#include "support/temporary_directory.hpp"
#include "torture/fault_kinds.hpp"
#include "torture/report.hpp"

namespace vantorium::torture {
namespace {

struct Options {
  std::vector<std::string> scenarios;
  std::vector<std::string> kinds;
  std::string only;
  bool isShort = false;
  bool isThorough = false;
  unsigned jobs = 2 * std::thread::hardware_concurrency();  // they mostly wait
};

constexpr const char* catalogueFolder = VANTORIUM_SOURCE_DIR "/tools/sandbox/catalogue";
constexpr Fault noFault{"no", "fault", EIO, 0, false};
constexpr std::uint64_t runsOfShort = 1;  // for each scenario and fault
constexpr int triesOfOnly = 20;           // threads do not take turns in the same way each time
constexpr std::uint64_t allAllocationsTo = 300;
constexpr std::uint64_t allocationStep = 7;

/// The ad service, in a process of its own, where nothing fails.
class Service {
 public:
  Service() {
    std::array<int, 2> pipe{};
    if (::pipe(pipe.data()) != 0) throw std::runtime_error("no pipe");
    process_ = fork();
    if (process_ == 0) serve(pipe[1]);
    close(pipe[1]);
    std::array<char, 64> url{};
    const ssize_t size = ::read(pipe[0], url.data(), url.size());
    close(pipe[0]);
    url_.assign(url.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  }
  ~Service() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  const std::string& url() const { return url_; }

 private:
  [[noreturn]] static void serve(int answer) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    sandbox::Server server{sandbox::Options{.catalogue = catalogueFolder}};
    server.start();
    const std::string url = server.baseURL();
    if (::write(answer, url.data(), url.size()) < 0) _exit(1);
    for (;;) pause();
  }

  pid_t process_ = 0;
  std::string url_;
};

class Torture {
 public:
  explicit Torture(Options options) : options_(std::move(options)) { Report::printHead(); }

  /// Whether all was well.
  bool run() {
    for (const Scenario& scenario : scenarios()) {
      if (!options_.scenarios.empty() && !contains(options_.scenarios, scenario.name)) continue;
      Setting setting{.service = service_.url(), .catalogue = &catalogue_, .expected = {}};
      setting.expected = inventoryOf(scenario, setting);
      for (const Fault& fault : faults())
        if (options_.kinds.empty() || contains(options_.kinds, fault.kind)) torture(scenario, setting, fault);
    }
    report_.printFindings();
    return report_.isClean();
  }
  bool runOnly() {
    std::istringstream parts(options_.only);
    std::string scenarioName, kind, faultName, number;
    std::getline(parts, scenarioName, ':'), std::getline(parts, kind, ':');
    std::getline(parts, faultName, ':'), std::getline(parts, number, ':');
    for (const Scenario& scenario : scenarios()) {
      for (const Fault& fault : faults()) {
        if (scenario.name != scenarioName || fault.kind != kind || fault.name != faultName) continue;
        Setting setting{.service = service_.url(), .catalogue = &catalogue_, .expected = {}};
        setting.expected = inventoryOf(scenario, setting);
        for (int i = 0; i < triesOfOnly && report_.isClean(); ++i) {
          start(scenario, setting, fault, std::stoull(number));
          finishOne(scenario);
        }
        report_.printRow();
        report_.printFindings();
        for (const std::string& line : setting.expected) fmt::print("expected: {}\n", line);
        return report_.isClean();
      }
    }
    throw std::invalid_argument(
        "There is no such scenario or fault. Give SCENARIO:KIND:FAULT:NUMBER of a report.");
  }

 private:
  static bool contains(const std::vector<std::string>& names, const char* name) {
    return std::find(names.begin(), names.end(), name) != names.end();
  }

  /// What is met and left by a run without a fault.
  Inventory inventoryOf(const Scenario& scenario, const Setting& setting) {
    start(scenario, setting, noFault, 0);
    reference_ = finishOne(scenario);
    report_.printRow();
    std::istringstream text(reference_->record().inventory.text());
    Inventory inventory;
    for (std::string line; std::getline(text, line);) inventory.insert(line);
    return inventory;
  }

  void torture(const Scenario& scenario, const Setting& setting, const Fault& fault) {
    const std::uint64_t usual = reference_->record().order.countOf(fault.operations);
    if (usual == 0) return;
    isThrough_ = false;
    const bool isSampled = std::strcmp(fault.kind, "memory") == 0 && !options_.isThorough;
    std::uint64_t step = options_.isShort ? usual / runsOfShort + 1 : 1;
    // Threads take turns as they like: a run that ends before its fault tells little unless it was the usual
    // length.
    for (std::uint64_t number = (step + 1) / 2; number <= usual || !(isThrough_ || options_.isShort);
         number += step) {
      if (!options_.isShort && isSampled && number > allAllocationsTo) step = allocationStep;
      if (running_.size() >= options_.jobs) finishOne(scenario);
      start(scenario, setting, fault, number);
    }
    while (!running_.empty()) finishOne(scenario);
    report_.printRow();
  }

  void start(const Scenario& scenario, const Setting& setting, const Fault& fault, std::uint64_t number) {
    auto run = std::make_unique<Run>(scenario, setting, fault, number,
                                     folder_.path() / std::to_string(1'000'000 + ++runs_));
    const pid_t process = run->process();
    running_[process] = std::move(run);
  }

  /// Waits for the next to end, and takes it into the report.
  std::unique_ptr<Run> finishOne(const Scenario& scenario) {
    int status = 0;
    pid_t process = 0;
    while ((process = waitpid(-1, &status, WNOHANG)) <= 0 || !running_.contains(process)) {
      for (const auto& [each, run] : running_) run->endIfOverdue();
      usleep(1000);
    }
    auto run = std::move(running_.extract(process).mapped());
    run->ended(status);
    isThrough_ = !run->record().order.isReached;
    report_.add(scenario, *run);
    return run;
  }

  const Options options_;
  const Service service_;
  const Catalogue catalogue_{catalogueFolder, service_.url()};
  testing::TemporaryDirectory folder_;
  std::map<pid_t, std::unique_ptr<Run>> running_;
  int runs_ = 0;
  std::unique_ptr<Run> reference_;  ///< the scenario's run without a fault
  bool isThrough_ = false;          ///< a run has ended without its fault
  Report report_;
};

}  // namespace
}  // namespace vantorium::torture

int main(int argc, char** argv) {
  using namespace vantorium::torture;
  CLI::App app{"Fails one operation after the other.", "vantorium_torture"};
  Options options;
  app.add_option("--only", options.only, "One run again: SCENARIO:KIND:FAULT:NUMBER, as a report has it");
  app.add_option("--scenario", options.scenarios, "Only these");
  app.add_option("--kind", options.kinds, "Only these: file, socket, memory");
  app.add_flag("--short", options.isShort, "A few numbers of each fault");
  app.add_flag("--all", options.isThorough, "Every allocation, not every seventh");
  app.add_option("--jobs", options.jobs, "Runs side by side")->check(CLI::Range(1, 64));
  CLI11_PARSE(app, argc, argv);
  try {
    // The first backtrace loads a library, which none of the runs is to do.
    std::array<void*, 4> frames{};
    backtrace(frames.data(), frames.size());
    Torture torture(options);
    return (options.only.empty() ? torture.run() : torture.runOnly()) ? 0 : 1;
  } catch (const std::exception& error) {
    fmt::print(stderr, "vantorium_torture: {}\n", error.what());
    return 2;
  }
}
