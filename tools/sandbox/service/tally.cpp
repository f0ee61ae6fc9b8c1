#include "sandbox/service/tally.hpp"

#include <algorithm>
#include <string_view>

namespace vantorium::sandbox {

using nlohmann::json;

namespace {

constexpr std::size_t mostTold = 20;
constexpr std::string_view reportPath = "/api/impressions/";
constexpr std::array<std::string_view, 2> permissionPaths{"/api/canReward/", "/api/canView/"};

void keep(std::vector<std::string>& list, const std::string& text) {
  if (list.size() < mostTold) list.push_back(text);
}

}  // namespace

void Tally::note(const Call& call, bool isStruck, const std::vector<std::string>& violations,
                 const Plan& plan) {
  const std::lock_guard lock(mutex_);
  ++requests_;
  if (isStruck) ++struck_;
  violations_ += violations.size();
  for (const auto& violation : violations) keep(firstViolations_, call.path + ": " + violation);
  longestTarget_ = std::max(longestTarget_, call.request.target.size());
  // One that was sent elsewhere by a redirect comes as GET: the service asked for it.
  if (call.path.starts_with(reportPath) && call.request.method == "POST")
    noteReport(call.path.substr(reportPath.size()));
  for (const auto path : permissionPaths) {
    if (call.path.starts_with(path)) notePermission(std::string(path), plan);
  }
}

void Tally::noteReport(const std::string& tail) {
  const std::size_t slash = tail.find('/');
  const std::string kind = slash == std::string::npos ? kinds.front() : tail.substr(slash + 1);
  const auto known = std::find(kinds.begin(), kinds.end(), kind);
  if (known == kinds.end()) return;
  const auto index = static_cast<std::size_t>(known - kinds.begin());
  const std::string impression = tail.substr(0, slash);
  ++sums_[impression.substr(0, impression.find('-'))][index];
  if (++reports_[impression][index] < 2) return;
  ++timesAgain_;
  keep(again_, tail);
}

// Only an answer that is sent in the orderly way can be read by whoever asked.
void Tally::notePermission(const std::string& path, const Plan& plan) {
  const bool isSent = plan.answer && !plan.deliver;
  const std::string word = isSent ? plan.answer->body.read(0, 8) : "";
  Permissions& permissions = permissions_[path];
  ++(word == "true" ? permissions.granted : word == "false" ? permissions.refused : permissions.unanswered);
}

void Tally::clear() {
  const std::lock_guard lock(mutex_);
  requests_ = struck_ = violations_ = timesAgain_ = longestTarget_ = 0;
  firstViolations_.clear();
  reports_.clear();
  sums_.clear();
  again_.clear();
  permissions_.clear();
}

json Tally::toJSON(const Counts& counts) {
  json told = json::object();
  for (std::size_t kind = 0; kind < kinds.size(); ++kind) told[kinds[kind]] = counts[kind];
  return told;
}

json Tally::summary() const {
  const std::lock_guard lock(mutex_);
  json permissions = json::object();
  for (const auto& [path, counted] : permissions_) {
    permissions[path] = {
        {"granted", counted.granted}, {"refused", counted.refused}, {"unanswered", counted.unanswered}};
  }
  json sums = json::object();
  for (const auto& [family, counts] : sums_) sums[family] = toJSON(counts);
  return {{"requests", requests_},
          {"struck", struck_},
          {"violations", violations_},
          {"firstViolations", firstViolations_},
          {"longestTarget", longestTarget_},
          {"reports", std::move(sums)},
          {"timesAgain", timesAgain_},
          {"firstAgain", again_},
          {"permissions", std::move(permissions)}};
}

json Tally::reports(const json& impressions) const {
  const std::lock_guard lock(mutex_);
  json told = json::object();
  for (const auto& impression : impressions) {
    const auto found = impression.is_string() ? reports_.find(impression.get<std::string>()) : reports_.end();
    if (found == reports_.end()) continue;
    told[found->first] = toJSON(found->second);
  }
  return told;
}

}  // namespace vantorium::sandbox
