#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace vantorium::soak {

/// What the process holds, at rest after so many rounds.
struct Sample {
  int round = 0;
  double residentKiB = 0;  ///< of the process, as the system counts
  double heapKiB = 0;      ///< given out by malloc and not given back
  double descriptors = 0;  ///< open
  double threads = 0;
  double files = 0;    ///< in the application's folder of caches
  double bytes = 0;    ///< of them, as blocks of the disk
  double seconds = 0;  ///< since the start, of real time
  // Since the start:
  std::uint64_t completions = 0;
  std::uint64_t reports = 0;
  std::uint64_t rewards = 0;
  std::uint64_t lost = 0;        ///< reports and rewards
  std::uint64_t doubled = 0;     ///< likewise
  std::uint64_t violations = 0;  ///< all that should not have been, those two included
};

Sample measure(int round, const std::filesystem::path& caches);

/// What grew more than it may between a tenth of the rounds and the last, one line each; and what was more
/// than `budgetBytes` at any time.
std::vector<std::string> growth(const std::vector<Sample>& samples, double budgetBytes);

/// Writes one line for each sample, with a head.
void writeCSV(const std::filesystem::path& path, const std::vector<Sample>& samples);

}  // namespace vantorium::soak
