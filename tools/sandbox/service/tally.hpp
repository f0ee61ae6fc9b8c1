#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <unordered_map>
#include <vector>

#include "sandbox/service/faults.hpp"

namespace vantorium::sandbox {

/// Counts what arrived since the start or the last reset, however much it was: numbers alone, where the
/// journal keeps the newest requests whole. Callable on any thread.
class Tally {
 public:
  /// A request that arrived, and what is about to become of it.
  void note(const Call& call, bool isStruck, const std::vector<std::string>& violations, const Plan& plan);
  void clear();

  /// What `GET /sandbox/tally` answers, but for what other parts of the service know.
  nlohmann::json summary() const;
  /// How often each kind of report arrived for these impressions: {"i-1":{"impression":1,…},…}.
  nlohmann::json reports(const nlohmann::json& impressions) const;

 private:
  static constexpr std::array<const char*, 4> kinds{"impression", "started", "finished", "click"};
  using Counts = std::array<std::uint32_t, kinds.size()>;
  struct Permissions {
    std::uint64_t granted = 0, refused = 0, unanswered = 0;
  };

  static nlohmann::json toJSON(const Counts& counts);
  void noteReport(const std::string& tail);
  void notePermission(const std::string& path, const Plan& plan);

  mutable std::mutex mutex_;  // guards everything below
  std::uint64_t requests_ = 0;
  std::uint64_t struck_ = 0;
  std::uint64_t violations_ = 0;
  std::vector<std::string> firstViolations_;
  std::size_t longestTarget_ = 0;
  std::unordered_map<std::string, Counts> reports_;  // by impression
  std::map<std::string, Counts> sums_;               // by what stands before its first "-"
  std::vector<std::string> again_;
  std::uint64_t timesAgain_ = 0;
  std::unordered_map<std::string, Permissions> permissions_;
};

}  // namespace vantorium::sandbox
