#include "soak/measure.hpp"

#include <fmt/format.h>
#include <malloc.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <system_error>

namespace vantorium::soak {

namespace fs = std::filesystem;

namespace {

constexpr double mostMemoryKiB = 1024;  // by which memory may grow
constexpr double mostDescriptors = 8;   // connections that are kept open come and go
constexpr double mostFiles = 200;       // by which their number may grow once the budget is used up
constexpr double slackBytes = 8 << 20;  // what is under way or unshown lies beside the budget
constexpr std::size_t middle = 3;       // samples whose median stands for a moment

double valueInStatus(const char* key) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(key)) return std::stod(line.substr(line.find(':') + 1));
  }
  return 0;
}

double countOf(const fs::path& folder) {
  return static_cast<double>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

void measureFiles(const fs::path& caches, Sample& sample) {
  std::error_code ignored;
  for (fs::recursive_directory_iterator each(caches, ignored), end; each != end; each.increment(ignored)) {
    struct stat facts {};
    if (::lstat(each->path().c_str(), &facts) != 0) continue;
    sample.files += 1;
    sample.bytes += static_cast<double>(facts.st_blocks) * 512;
  }
}

using Quantity = double Sample::*;

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                   values.end());
  return values[values.size() / 2];
}

double around(const std::vector<Sample>& samples, std::size_t first, Quantity quantity) {
  std::vector<double> values;
  for (std::size_t at = first; at < std::min(first + middle, samples.size()); ++at)
    values.push_back(samples[at].*quantity);
  return median(std::move(values));
}

// How far the quantity falls by itself from one sample to the next: what it rises by no more than that is no
// growth.
double noiseOf(const std::vector<Sample>& samples, std::size_t first, Quantity quantity) {
  double largestDrop = 0;
  for (std::size_t at = first + 1; at < samples.size(); ++at)
    largestDrop = std::max(largestDrop, samples[at - 1].*quantity - samples[at].*quantity);
  return largestDrop;
}

}  // namespace

Sample measure(int round, const fs::path& caches) {
  Sample sample{.round = round};
  const struct mallinfo2 heap = mallinfo2();
  sample.heapKiB = static_cast<double>(heap.uordblks + heap.hblkhd) / 1024;
  sample.residentKiB = valueInStatus("VmRSS");
  sample.threads = valueInStatus("Threads");
  sample.descriptors = countOf("/proc/self/fd") - 1;
  measureFiles(caches, sample);
  return sample;
}

std::vector<std::string> growth(const std::vector<Sample>& samples, double budgetBytes) {
  if (samples.size() < 2 * middle) return {"there are too few samples to tell anything"};
  std::vector<std::string> found;
  const int tenth = samples.back().round / 10;
  const auto first = static_cast<std::size_t>(
      std::ranges::find_if(samples, [&](const Sample& each) { return each.round >= tenth; }) -
      samples.begin());
  const std::size_t last = samples.size() - middle;
  const auto check = [&](const char* what, Quantity quantity, double most) {
    const double before = around(samples, first, quantity);
    const double after = around(samples, last, quantity);
    if (after - before <= most) return;
    found.push_back(fmt::format("{} grew from {:.0f} at round {} to {:.0f} at round {}, by more than {:.0f}",
                                what, before, samples[first].round, after, samples.back().round, most));
  };
  check("heap in use (KiB)", &Sample::heapKiB, mostMemoryKiB);
  check("resident memory (KiB)", &Sample::residentKiB,
        mostMemoryKiB + noiseOf(samples, first, &Sample::residentKiB));
  check("open descriptors", &Sample::descriptors, mostDescriptors);
  check("threads", &Sample::threads, 0);
  // Until the budget is used up, the cache may fill.
  if (around(samples, first, &Sample::bytes) > budgetBytes / 2) check("files", &Sample::files, mostFiles);
  const double most = std::ranges::max_element(samples, {}, &Sample::bytes)->bytes;
  if (most > budgetBytes + slackBytes)
    found.push_back(
        fmt::format("the cache had {:.0f} bytes, {:.0f} more than its budget", most, most - budgetBytes));
  return found;
}

void writeCSV(const fs::path& path, const std::vector<Sample>& samples) {
  std::ofstream file(path);
  file << "round,resident_kib,heap_kib,descriptors,threads,files,bytes,seconds,completions,reports,rewards,"
          "lost,doubled,"
          "violations\n";
  for (const Sample& each : samples) {
    file << fmt::format("{},{:.0f},{:.0f},{:.0f},{:.0f},{:.0f},{:.0f},{:.2f},", each.round, each.residentKiB,
                        each.heapKiB, each.descriptors, each.threads, each.files, each.bytes, each.seconds)
         << fmt::format("{},{},{},{},{},{}\n", each.completions, each.reports, each.rewards, each.lost,
                        each.doubled, each.violations);
  }
}

}  // namespace vantorium::soak
