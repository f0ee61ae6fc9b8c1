// What the SDK's calls cost the thread that makes them.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "bench_world.hpp"
#include "precache/template_page.hpp"

namespace vantorium::bench {
namespace {

/// One whole start per round: a new process's worth of SDK, its services, its settings written to disk.
void configure(benchmark::State& state) {
  sandbox::Server server{sandbox::Options{}};
  server.start();
  server.setInitAnswer({{"status", "success"}, {"token", "t"}});
  const Home home;
  std::vector<double> milliseconds;
  for (auto _ : state) {
    const auto host = makeHost(home, headless::ClockKind::virtualTime);
    const auto sdk = makeSdk(host, server.baseURL());
    bool ended = false;
    const auto start = std::chrono::steady_clock::now();
    sdk->configure("bench", Parameters{{"userId", "u"}, {"age", 30}}, nullptr,
                   [&](bool, const std::optional<Error>&) { ended = true; });
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(taken.count());
    milliseconds.push_back(taken.count() * 1000);
    host->loop().runUntil([&] { return ended; });
    sdk->shutdown();
  }
  std::sort(milliseconds.begin(), milliseconds.end());
  state.counters["median_ms"] = milliseconds[milliseconds.size() / 2];
  state.counters["p99_ms"] = milliseconds[milliseconds.size() * 99 / 100];
}
BENCHMARK(configure)->UseManualTime()->Iterations(500)->Unit(benchmark::kMillisecond);

/// With as many campaigns as that, whose films are on disk.
void isCampaignReady(benchmark::State& state) {
  sandbox::Server server{sandbox::Options{}};
  server.start();
  server.setInitAnswer({{"status", "success"}, {"token", "t"}});
  const Home home;
  const auto host = makeHost(home, headless::ClockKind::virtualTime);
  const auto sdk = makeSdk(host, server.baseURL());
  configureAndWait(*sdk, *host);
  const auto film = std::make_shared<StoredPath>(home.path() / "film.mp4");
  std::ofstream(film->path()) << "film";
  const auto creative = std::make_shared<Creative>();
  creative->film = film;
  for (int i = 0; i < state.range(0); ++i) {
    sdk->client()->cacheClient.inventory->add(
        {std::make_shared<Campaign>(nlohmann::json::object()), creative, host->clock().now()}, "p");
  }
  for (auto _ : state) benchmark::DoNotOptimize(sdk->isCampaignReady("p"));
  sdk->shutdown();
}
BENCHMARK(isCampaignReady)->Arg(0)->Arg(1)->Arg(10'000)->Unit(benchmark::kMicrosecond);

/// A template of 1 MiB, with the braces of styles and scripts, and 200 keys that each occur in it.
void fillTemplate(benchmark::State& state) {
  nlohmann::json values;
  std::string page;
  for (int key = 0; key < 200; ++key) {
    const std::string name = "key_" + std::to_string(key);
    values[name] = "the value of " + name;
    page += "<p>{{" + name + "}}</p>";
    while (page.size() < (std::size_t{1} << 20U) * static_cast<std::size_t>(key + 1) / 200)
      page +=
          "<style>.a{margin:0}</style><script>f = () => { return {a: 1}; }</script> and text of the page\n";
  }
  for (auto _ : state) benchmark::DoNotOptimize(filledTemplate(page, values));
}
BENCHMARK(fillTemplate)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantorium::bench

BENCHMARK_MAIN();
