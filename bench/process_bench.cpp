// Measures one thing of a whole process and prints it as JSON; bench/run puts it beside its peers.
//
//   vantorium_bench_process precache URL...         seconds until all are on disk, growth of peak memory
//   vantorium_bench_process idle BASE-URL SECONDS   voluntary context switches of an SDK that has nothing to
//   do

#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <future>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "bench_world.hpp"

namespace vantorium::bench {
namespace {

/// A number, in kB or plain, of a status file of this process.
long statusNumber(const std::filesystem::path& file, const std::string& key) {
  std::ifstream status(file);
  std::string word;
  long number = 0;
  while (status >> word) {
    if (word == key + ":" && status >> number) return number;
  }
  return 0;
}

void resetPeakMemory() { std::ofstream("/proc/self/clear_refs") << "5"; }

int precache(const std::vector<std::string>& urls) {
  const Home home;
  const auto host = makeHost(home, headless::ClockKind::realTime);
  const auto context = std::make_shared<SdkContext>(host);
  Client client(context);
  resetPeakMemory();
  const long before = statusNumber("/proc/self/status", "VmHWM");
  std::promise<bool> ended;
  const auto start = std::chrono::steady_clock::now();
  client.cacheClient->precacheFiles("bench", urls, "", client.fileDownloader,
                                    [&](bool success, auto&&) { ended.set_value(success); });
  const bool success = ended.get_future().get();
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  const long growth = statusNumber("/proc/self/status", "VmHWM") - before;
  fmt::print("{}\n",
             nlohmann::json{{"success", success}, {"seconds", taken.count()}, {"growth_kb", growth}}.dump());
  client.shutdown();
  return success ? 0 : 1;
}

/// Of every thread but the calling one, which is the one that measures.
long otherThreadsSwitches() {
  long sum = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    if (task.path().filename() == std::to_string(gettid())) continue;
    sum += statusNumber(task.path() / "status", "voluntary_ctxt_switches");
  }
  return sum;
}

/// The service runs in another process, and so do its threads.
int idle(const std::string& baseURL, double seconds) {
  const Home home;
  const auto host = makeHost(home, headless::ClockKind::realTime);
  const auto sdk = makeSdk(host, baseURL);
  sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.autoCaching = false; });
  configureAndWait(*sdk, *host);
  host->loop().runUntil([] { return false; }, Seconds{1});  // what the answer set off comes to rest
  const long before = otherThreadsSwitches();
  const long mainBefore = statusNumber("/proc/thread-self/status", "voluntary_ctxt_switches");
  host->loop().runUntil([] { return false; }, Seconds{seconds});
  const long mainSwitches = statusNumber("/proc/thread-self/status", "voluntary_ctxt_switches") - mainBefore;
  const long others = otherThreadsSwitches() - before;
  fmt::print("{}\n", nlohmann::json{{"other_threads", others}, {"main_thread", mainSwitches}}.dump());
  sdk->shutdown();
  return 0;
}

int run(const std::vector<std::string>& arguments) {
  if (arguments.size() > 2 && arguments[1] == "precache")
    return precache({arguments.begin() + 2, arguments.end()});
  if (arguments.size() == 4 && arguments[1] == "idle") return idle(arguments[2], std::stod(arguments[3]));
  fmt::print(stderr, "usage: vantorium_bench_process precache URL... | idle BASE-URL SECONDS\n");
  return 2;
}

}  // namespace
}  // namespace vantorium::bench

int main(int argc, char** argv) {
  try {
    return vantorium::bench::run({argv, argv + argc});
  } catch (const std::exception& problem) {
    fmt::print(stderr, "vantorium_bench_process: {}\n", problem.what());
    return 1;
  }
}
