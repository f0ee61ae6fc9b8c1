#include "soak/books.hpp"

#include <fmt/format.h>

#include <cstdio>

namespace vantorium::soak {

using nlohmann::json;

namespace {

constexpr std::uint64_t mostTold = 5;

std::string familyOf(const std::string& impression) { return impression.substr(0, impression.find('-')); }

std::uint64_t heard(const json& tally, const std::string& family, const std::string& kind) {
  const json& reports = tally["reports"];
  return reports.contains(family) ? reports[family][kind].get<std::uint64_t>() : 0;
}

std::uint64_t valueOf(const std::map<std::string, std::map<std::string, std::uint64_t>>& sums,
                      const std::string& family, const std::string& kind) {
  const auto found = sums.find(family);
  if (found == sums.end()) return 0;
  const auto sum = found->second.find(kind);
  return sum == found->second.end() ? 0 : sum->second;
}

}  // namespace

void Books::owe(const std::string& impression, const std::string& kind) {
  Owed& owed = owed_[impression];
  owed.kinds.emplace(kind, round);
  owed.isOfOutage = owed.isOfOutage || isOutage;
  ++sums_[familyOf(impression)][kind];
  ++reports_;
}

void Books::oweUnnamed(const std::string& family, const std::string& kind) {
  ++sums_[family][kind];
  ++unnamed_[family][kind];
  ++fresh_[family][kind];
  ++reports_;
}

json Books::owedImpressions() const {
  json names = json::array();
  for (const auto& [impression, owed] : owed_) names.push_back(impression);
  return names;
}

std::uint64_t Books::missing(const json& tally, const std::string& family, const std::string& kind) const {
  const std::uint64_t came = heard(tally, family, kind) + valueOf(writtenOff_, family, kind);
  const std::uint64_t due = valueOf(sums_, family, kind);
  return due > came ? due - came : 0;
}

bool Books::settleReports(const json& tally) {
  const json& told = tally["impressions"];
  for (auto each = owed_.begin(); each != owed_.end();) {
    const auto counts = told.find(each->first);
    if (counts != told.end())
      std::erase_if(each->second.kinds, [&](const auto& kind) { return (*counts)[kind.first] > 0; });
    each = each->second.kinds.empty() ? owed_.erase(each) : std::next(each);
  }
  bool isSettled = owed_.empty();
  for (const auto& [family, kinds] : unnamed_) {
    for (const auto& [kind, due] : kinds) isSettled = isSettled && missing(tally, family, kind) == 0;
  }
  return isSettled;
}

void Books::closeReports(const json& tally) {
  settleReports(tally);
  for (const auto& [impression, owed] : owed_) {
    for (const auto& [kind, since] : owed.kinds) {
      ++writtenOff_[familyOf(impression)][kind];
      if (owed.isExcused) continue;
      ++lost_;
      violate(owed.isOfOutage ? "report lost in an outage" : "report lost",
              fmt::format("{} of {}, due since round {}", kind, impression, since));
    }
  }
  owed_.clear();
  const auto again = tally["timesAgain"].get<std::uint64_t>();
  if (again > doubled_)
    violate("report doubled",
            fmt::format("{} times, among them {}", again - doubled_, tally["firstAgain"].dump()));
  doubled_ = again;
  closeSums(tally);
}

void Books::closeSums(const json& tally) {
  for (const auto& [family, kinds] : unnamed_) {
    for (const auto& [kind, due] : kinds) {
      const std::uint64_t absent = missing(tally, family, kind);
      writtenOff_[family][kind] += absent;
      const std::uint64_t excused = valueOf(excused_, family, kind);
      if (absent <= excused) continue;
      lost_ += absent - excused;
      violate("report lost", fmt::format("{} of {} {}s", kind, absent - excused, family));
    }
  }
  fresh_.clear();
  excused_.clear();
  for (const auto& [family, kinds] : tally["reports"].items()) {
    for (const auto& [kind, count] : kinds.items()) {
      const std::uint64_t due = valueOf(sums_, family, kind);
      if (count.get<std::uint64_t>() <= due + doubled_) continue;
      violate("report unasked",
              fmt::format("{} {}s of the family {} arrived, {} were due", count.dump(), kind, family, due));
      sums_[family][kind] = count.get<std::uint64_t>();
    }
  }
}

void Books::oweReward(std::int64_t amount, const std::string& placement) { rewardsOwed_[amount] = placement; }

void Books::receiveReward(std::int64_t amount, const std::string& placement) {
  ++rewards_;
  const auto owed = rewardsOwed_.find(amount);
  const bool isOwed = owed != rewardsOwed_.end() && owed->second == placement;
  if (isOwed) {
    rewardsOwed_.erase(owed);
  } else if (rewardsExcused_.erase(amount) == 0) {
    ++rewardsDoubled_;
    violate("reward doubled or unasked", fmt::format("{} for {}", amount, placement));
  }
}

std::uint64_t Books::freshRefusals(const json& tally) const {
  const json& permissions = tally["permissions"];
  const auto asked = permissions.find("/api/canReward/");
  return asked == permissions.end() ? 0 : (*asked)["refused"].get<std::uint64_t>() - refusalsSeen_;
}

bool Books::settleRewards(const json& tally) const { return rewardsOwed_.size() <= freshRefusals(tally); }

void Books::closeRewards(const json& tally) {
  const std::uint64_t refused = freshRefusals(tally);
  if (rewardsOwed_.size() > refused) {
    const std::uint64_t lost = rewardsOwed_.size() - refused;
    lost_ += lost;
    violate("reward lost", fmt::format("{} of {} that are open, for the service refused {}; the first is {}",
                                       lost, rewardsOwed_.size(), refused, rewardsOwed_.begin()->first));
  }
  refusalsSeen_ += refused;
  rewardsOwed_.clear();
  rewardsExcused_.clear();
}

void Books::closeClicks() {
  if (!settleClicks())
    violate("click told wrongly",
            fmt::format("{} clicks, the delegate heard {}", clicksOwed_, clicksReceived_));
  clicksOwed_ = clicksReceived_;
}

void Books::excuse() {
  for (auto& [impression, owed] : owed_) owed.isExcused = true;
  for (const auto& [family, kinds] : fresh_) {
    for (const auto& [kind, count] : kinds) excused_[family][kind] += count;
  }
  fresh_.clear();
  rewardsExcused_.merge(rewardsOwed_);
  rewardsOwed_.clear();
}

void Books::violate(const std::string& kind, const std::string& what) {
  const std::uint64_t number = ++violations_[kind];
  if (number <= mostTold) fmt::print(stderr, "soak: round {}: {}: {}\n", round, kind, what);
}

}  // namespace vantorium::soak
