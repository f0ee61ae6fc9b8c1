// The soak as a program: scripts/soak builds and runs it and draws its curves.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <random>

#include "soak/scenario.hpp"

namespace {

namespace fs = std::filesystem;
using vantorium::soak::Options;
using vantorium::soak::Sample;
using vantorium::soak::Scenario;

constexpr int usageError = 2;

void printHead() {
  fmt::print("{:>8} {:>8} {:>8} {:>4} {:>7} {:>6} {:>9} {:>11} {:>8} {:>7} {:>5} {:>7} {:>8} {:>8}\n",
             "round", "rss KiB", "heap KiB", "fds", "threads", "files", "cache KiB", "completions", "reports",
             "rewards", "lost", "doubled", "violated", "rounds/s");
}

void print(const Sample& sample) {
  fmt::print("{:>8} {:>8.0f} {:>8.0f} {:>4.0f} {:>7.0f} {:>6.0f} {:>9.0f} ", sample.round, sample.residentKiB,
             sample.heapKiB, sample.descriptors, sample.threads, sample.files, sample.bytes / 1024);
  fmt::print("{:>11} {:>8} {:>7} {:>5} {:>7} {:>8} {:>8.1f}\n", sample.completions, sample.reports,
             sample.rewards, sample.lost, sample.doubled, sample.violations,
             sample.seconds > 0 ? sample.round / sample.seconds : 0);
  std::fflush(stdout);
}

void play(Scenario& scenario, const Options& options) {
  printHead();
  for (int round = 1; round <= options.rounds; ++round) {
    scenario.playRound();
    const int samplesBefore = static_cast<int>(scenario.samples().size());
    if (static_cast<long long>(round) * options.samples / options.rounds <= samplesBefore) continue;
    scenario.rest();
    if (samplesBefore % (options.samples / 20 + 1) == 0) print(scenario.samples().back());
  }
  scenario.end();
}

int report(Scenario& scenario, const Options& options, const fs::path& csv) {
  const auto totals = scenario.totals();
  for (const auto& [name, value] : totals.items()) fmt::print("{}: {}\n", name, value.dump());
  const auto grown = growth(scenario.samples(), options.budgetMiB * 1024 * 1024);
  for (const auto& line : grown) fmt::print("NOT FLAT: {}\n", line);
  for (const auto& [kind, number] : scenario.violations())
    fmt::print("VIOLATED {} times: {}\n", number, kind);
  if (!csv.empty()) writeCSV(csv, scenario.samples());
  const bool isWell = grown.empty() && scenario.violations().empty();
  fmt::print("{} after {} rounds of seed {}\n", isWell ? "all well" : "NOT WELL", scenario.round(),
             options.seed);
  return isWell ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{
      "Has an application live through many rounds of ads with faults, and holds the SDK to its word."};
  Options options;
  options.seed = std::random_device{}();
  options.home = "soak-home";
  fs::path csv;
  app.add_option("rounds", options.rounds, "How many rounds")
      ->check(CLI::Range(10, 100'000'000))
      ->capture_default_str();
  app.add_option("--seed", options.seed,
                 "Number that decides all that is left to chance; a fresh one unless given");
  app.add_option("--samples", options.samples, "How often to rest, check and measure")
      ->check(CLI::Range(6, 100'000))
      ->capture_default_str();
  app.add_option("--budget", options.budgetMiB, "MiB that the cache may keep")->capture_default_str();
  app.add_option("--home", options.home, "Folder of the application, emptied first")->capture_default_str();
  app.add_option("--csv", csv, "File for what was measured");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : usageError;
  }
  options.samples = std::min(options.samples, options.rounds);
  try {
    fs::remove_all(options.home);
    fs::create_directories(options.home);
    fmt::print("{} rounds of seed {}\n", options.rounds, options.seed);
    Scenario scenario(options);
    play(scenario, options);
    return report(scenario, options, csv);
  } catch (const std::exception& error) {
    fmt::print(stderr, "soak: {}\n", error.what());
    return usageError;
  }
}
