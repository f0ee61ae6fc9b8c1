#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "torture/record.hpp"
#include "torture/scenarios.hpp"

namespace vantorium::torture {

/// One run in a process of its own: the scenario with one fault, then again without.
class Run {
 public:
  /// Starts it. `folder` is where it makes its home; the setting is to outlive the run.
  Run(const Scenario& scenario, const Setting& setting, const Fault& fault, std::uint64_t number,
      const std::filesystem::path& folder);
  ~Run();
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  const Fault& fault() const { return fault_; }
  std::uint64_t number() const { return number_; }
  pid_t process() const { return process_; }
  const Record& record() const { return *record_; }
  /// What it wrote on standard error.
  std::string complaints() const;

  /// Ends it if it takes too long; it tells then where it was.
  void endIfOverdue();
  /// Takes note of how it ended.
  void ended(int status);

 private:
  const Fault fault_;
  const std::uint64_t number_;
  const std::filesystem::path home_;
  Record* const record_;
  const std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
  pid_t process_ = 0;
};

}  // namespace vantorium::torture
