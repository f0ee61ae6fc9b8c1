#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

namespace vantorium::soak {

/// What is owed of reports, rewards and clicks, and what came. Finds what should not be; `violations` counts
/// it by kind.
class Books {
 public:
  int round = 0;          ///< to say when something happened
  bool isOutage = false;  ///< nobody can connect to the service: what comes due now is told apart

  // Reports: each that is owed arrives once. An impression's name begins with its family and a "-".
  void owe(const std::string& impression, const std::string& kind);
  /// As `owe`, of an impression whose name cannot be seen from outside; so only the numbers are held
  /// together.
  void oweUnnamed(const std::string& family, const std::string& kind);
  /// What to ask the service's tally for.
  nlohmann::json owedImpressions() const;
  /// Strikes off what arrived by now; true when nothing is left to arrive.
  bool settleReports(const nlohmann::json& tally);
  /// Takes what is left for lost, and looks for what should not have arrived.
  void closeReports(const nlohmann::json& tally);

  // Rewards: one for each ad that was seen to its end, unless the service said no. The amount names the ad.
  void oweReward(std::int64_t amount, const std::string& placement);
  void receiveReward(std::int64_t amount, const std::string& placement);
  /// Whether all have come but for those that the service refused.
  bool settleRewards(const nlohmann::json& tally) const;
  void closeRewards(const nlohmann::json& tally);

  void oweClick() { ++clicksOwed_; }
  void receiveClick() { ++clicksReceived_; }
  bool settleClicks() const { return clicksOwed_ == clicksReceived_; }
  void closeClicks();

  /// The SDK is about to be shut down: what has not come by then need not come any more.
  void excuse();

  /// Counts, and tells the first few of each kind on standard error.
  void violate(const std::string& kind, const std::string& what);
  const std::map<std::string, std::uint64_t>& violations() const { return violations_; }
  std::uint64_t reports() const { return reports_; }
  std::uint64_t rewards() const { return rewards_; }
  std::uint64_t lost() const { return lost_; }
  std::uint64_t doubled() const { return doubled_ + rewardsDoubled_; }

 private:
  struct Owed {
    std::map<std::string, int> kinds;  ///< each with the round in which it came due
    bool isOfOutage = false;
    bool isExcused = false;
  };
  using Sums = std::map<std::string, std::map<std::string, std::uint64_t>>;  ///< by family and kind

  std::uint64_t freshRefusals(const nlohmann::json& tally) const;
  std::uint64_t missing(const nlohmann::json& tally, const std::string& family,
                        const std::string& kind) const;
  void closeSums(const nlohmann::json& tally);

  std::map<std::string, Owed> owed_;
  Sums sums_;     ///< all that was ever owed
  Sums unnamed_;  ///< of that, what has no name
  Sums fresh_;    ///< of that, what came due since the last close
  Sums excused_;  ///< of that, what need not come
  Sums writtenOff_;
  std::map<std::int64_t, std::string> rewardsOwed_;
  std::map<std::int64_t, std::string> rewardsExcused_;
  std::uint64_t reports_ = 0;
  std::uint64_t rewards_ = 0;
  std::uint64_t lost_ = 0;
  std::uint64_t doubled_ = 0;
  std::uint64_t rewardsDoubled_ = 0;
  std::uint64_t refusalsSeen_ = 0;
  std::uint64_t clicksOwed_ = 0;
  std::uint64_t clicksReceived_ = 0;
  std::map<std::string, std::uint64_t> violations_;
};

}  // namespace vantorium::soak
