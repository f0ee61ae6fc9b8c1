// Measures one thing of a whole process and prints it as JSON; bench/run puts it beside its peers.
//
//   precache URL...         seconds until all are on disk, growth of peak memory
//   native BASE-URL        seconds until five native ads are fetched and their files on disk
//   unzip ARCHIVE FOLDER    seconds until all is unpacked, growth of resident memory
//   playable URL...         the longest that the main queue was held while archives were fetched and unpacked
//   idle BASE-URL SECONDS   voluntary context switches of an SDK that has nothing to do

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <future>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "archive/zip.hpp"
#include "bench_world.hpp"
#include "precache/campaign_controller.hpp"

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
  const Client client = Client::make(context, {});
  std::vector<Download> downloads;
  for (const auto& url : urls)
    downloads.push_back(*planDownload("bench", url, (client.cacheClient.files->root() / "bench").string()));
  resetPeakMemory();
  const long before = statusNumber("/proc/self/status", "VmHWM");
  std::promise<bool> ended;
  const auto start = std::chrono::steady_clock::now();
  client.cacheClient.downloads->precacheFiles(downloads, [&](const auto& files) {
    ended.set_value(std::ranges::all_of(files, [](const auto& file) { return static_cast<bool>(file); }));
  });
  const bool success = ended.get_future().get();
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  const long growth = statusNumber("/proc/self/status", "VmHWM") - before;
  fmt::print("{}\n",
             nlohmann::json{{"success", success}, {"seconds", taken.count()}, {"growth_kb", growth}}.dump());
  client.session->shutdown();
  return success ? 0 : 1;
}

int native(const std::string& baseURL) {
  const Home home;
  const auto host = makeHost(home, headless::ClockKind::realTime);
  const auto sdk = makeSdk(host, baseURL);
  sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.autoCaching = false; });
  configureAndWait(*sdk, *host);
  const auto options = std::make_shared<VantoriumNativeAdOptions>();
  options->numberOfAdsToPrecache = 5;
  std::promise<std::optional<Error>> ended;
  std::size_t files = 0;
  const auto start = std::chrono::steady_clock::now();
  sdk->precacheNativeAds("bench", options, DispatchQueue::serial("bench"), [&](const auto& ads, auto error) {
    for (const auto& ad : ads) files += ad->assets.size() + 1;
    ended.set_value(std::move(error));
  });
  const auto error = ended.get_future().get();
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  if (error) throw std::runtime_error(error->localizedDescription());
  fmt::print("{}\n", nlohmann::json{{"files", files}, {"seconds", taken.count()}}.dump());
  sdk->shutdown();
  return 0;
}

int unzip(const std::string& archive, const std::string& folder) {
  resetPeakMemory();
  const long before = statusNumber("/proc/self/status", "VmHWM");
  const auto start = std::chrono::steady_clock::now();
  const auto error = Zip::unzipFile(archive, folder, true);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  const long growth = statusNumber("/proc/self/status", "VmHWM") - before;
  fmt::print("{}\n",
             nlohmann::json{{"success", !error}, {"seconds", taken.count()}, {"growth_kb", growth}}.dump());
  return error ? 1 : 0;
}

/// A main queue that knows how long its longest piece of work took.
class TimedQueue : public DispatchQueue {
 public:
  explicit TimedQueue(std::shared_ptr<DispatchQueue> loop) : loop_(std::move(loop)) {}

  void async(std::function<void()> work) override {
    loop_->async([this, work = std::move(work)] {
      const auto start = std::chrono::steady_clock::now();
      work();
      longest = std::max<std::chrono::duration<double>>(longest, std::chrono::steady_clock::now() - start);
      ++pieces;
    });
  }

  std::chrono::duration<double> longest{0};
  int pieces = 0;

 private:
  const std::shared_ptr<DispatchQueue> loop_;
};

class TimedHost : public headless::Host {
 public:
  using headless::Host::Host;
  std::shared_ptr<DispatchQueue> mainQueue() override { return timedQueue; }

  const std::shared_ptr<TimedQueue> timedQueue = std::make_shared<TimedQueue>(headless::Host::mainQueue());
};

int playable(const std::vector<std::string>& urls) {
  const Home home;
  headless::Host::Options options;
  options.home = home.path();
  options.clock = headless::ClockKind::realTime;
  const auto host = std::make_shared<TimedHost>(options);
  const auto context = std::make_shared<SdkContext>(host);
  const Client client = Client::make(context, {});
  const auto unpackQueue = DispatchQueue::serial("bench.unpack");
  const auto start = std::chrono::steady_clock::now();
  std::vector<std::shared_ptr<CampaignController>> controllers;
  std::size_t succeeded = 0;
  std::size_t ended = 0;
  for (const std::string& url : urls) {
    const nlohmann::json campaign{{"type", "playable"}, {"zippedUrl", url}, {"tag", "<p>Hello</p>"}};
    controllers.push_back(std::make_shared<CampaignController>(std::make_shared<Campaign>(campaign), context,
                                                               client.cacheClient, unpackQueue, "bench"));
    controllers.back()->precache(nullptr, [&](const CampaignController::Outcome& creative) {
      succeeded += creative ? 1 : 0;
      ++ended;
    });
  }
  host->loop().runUntil([&] { return ended == urls.size(); }, Seconds{120});
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  fmt::print("{}\n", nlohmann::json{{"success", succeeded == urls.size()},
                                    {"seconds", taken.count()},
                                    {"longest_ms", host->timedQueue->longest.count() * 1000},
                                    {"pieces", host->timedQueue->pieces}}
                         .dump());
  client.session->shutdown();
  return succeeded == urls.size() ? 0 : 1;
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
  if (arguments.size() == 3 && arguments[1] == "native") return native(arguments[2]);
  if (arguments.size() == 4 && arguments[1] == "unzip") return unzip(arguments[2], arguments[3]);
  if (arguments.size() > 2 && arguments[1] == "playable")
    return playable({arguments.begin() + 2, arguments.end()});
  if (arguments.size() == 4 && arguments[1] == "idle") return idle(arguments[2], std::stod(arguments[3]));
  fmt::print(stderr,
             "usage: vantorium_bench_process precache URL... | native BASE-URL | unzip ARCHIVE FOLDER | "
             "playable URL... | idle BASE-URL SECONDS\n");
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
