// What the stage checks.
#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <nlohmann/json.hpp>

#include "torture/stage.hpp"
#include "torture/stage_delegate.hpp"

namespace vantorium::torture {

namespace fs = std::filesystem;

namespace {

constexpr double anHour = 3600;

/// What outlives the SDK: its settings, and the file that says whose the cache is.
bool mayBeLeft(const std::string& line) {
  return line.starts_with("left ~/preferences/settings.") ||
         line.starts_with("left ~/caches/com.vantorium.lock ");
}

}  // namespace

void Stage::expectReward() {
  ++rewardsExpected_;
  disarm();  // the service has to be asked until it answers
  const auto isThere = [this] {
    const Exempt exempt;
    return delegate_->rewards >= rewardsExpected_;
  };
  for (int hours = 0; hours < 3 && !isThere(); ++hours) {
    if (headless::runUntil(*host_, isThere, 1)) break;
    headless::advance(*host_, anHour);
  }
  if (!isThere()) note("the reward is lost");
  if (delegate_->rewards > rewardsExpected_) note("the reward came twice");
  rewardsExpected_ = delegate_->rewards;
}

bool Stage::isExpected(const std::string& line) const {
  return setting_.expected.empty() || setting_.expected.contains(line);
}

/// Nobody can be blamed for a file that could not be removed, because the removal was struck or because
/// folders cannot be opened and read as long as the fault stays. The next start removes it.
bool Stage::hasKeptFromRemoving() const {
  const int error = record_.order.fault.error;
  if (record_.order.fault.stays && (error == EMFILE || error == EIO)) return true;
  const std::string_view operation = record_.order.operation.data();
  return operation == "unlink" || operation == "unlinkat" || operation == "remove" || operation == "rmdir";
}

void Stage::check(const std::string& line) {
  record_.inventory.add(line + "\n");
  if (!isExpected(line)) note("not what the service sent: " + line);
}

void Stage::meet(const std::string& label, const fs::path& path) {
  if (!fs::is_directory(path)) return check(setting_.catalogue->describe(label, path, home_));
  const Inventory files = setting_.catalogue->describeAll(label, path, home_);
  for (const std::string& line : files) check(line);
  for (const std::string& line : setting_.expected)
    if (line.starts_with(label + " ") && !files.contains(line)) note("called ready without: " + line);
}

void Stage::meetWhatIsShown() {
  static const std::string scheme = "file://";
  const auto pathOf = [](const std::string& url) {
    return url.starts_with(scheme) ? url.substr(scheme.size()) : url;
  };
  for (const std::string& line : headless::takeEvents(*host_)) {
    const auto event = nlohmann::json::parse(line);
    if (event["event"] != "load" || event["kind"] == "request") continue;
    if (event["kind"] == "file") meet("page", pathOf(event["url"]));
    meet("page's", pathOf(event[event["kind"] == "file" ? "folder" : "base"]));
  }
  const auto screen = nlohmann::json::parse(headless::snapshot(*host_));
  if (screen.is_object() && screen["player"].is_object()) meet("film", pathOf(screen["player"]["source"]));
}

void Stage::checkFlags() {
  if (Vantorium::isConfiguring()) note("stuck: isConfiguring");
  if (Vantorium::isShowingAds()) note("stuck: isShowingAds");
  if (isInFront()) note("stuck: a screen whose call has ended is in front");
}

void Stage::expectAutoCaching(const std::vector<std::string>& placements) {
  const auto all = [&](const auto& isSo) { return std::all_of(placements.begin(), placements.end(), isSo); };
  const auto isAnnounced = [this](const auto& each) { return delegate_->announcements[each] > 0; };
  await("auto-caching", [&] { return all(isAnnounced); });
  delegate_->announcements.clear();
  disarm();
  for (int hours = 0; hours < 6 && !all(&Vantorium::isCampaignReady); ++hours) {
    if (headless::runUntil(
            *host_, [&] { return all(&Vantorium::isCampaignReady); }, 1))
      break;
    headless::advance(*host_, anHour);
  }
  for (const std::string& each : placements)
    if (!Vantorium::isCampaignReady(each)) note("auto-caching does not come back to " + each);
}

void Stage::checkEnd() {
  shutDown();
  awaitWorkers();
  for (const std::string& one : descriptors())
    if (!descriptorsBefore_.contains(one)) note("descriptor left open: " + one);
  for (const auto& call : calls_)
    if (call->completions != (call->hasThrown ? 0 : 1))
      note(fmt::format("{} completed {} times", call->name, call->completions));
  for (const std::string& line : setting_.catalogue->describeAll("left", home_, home_)) {
    if (!mayBeLeft(line) && !hasKeptFromRemoving()) note("left behind: " + line);
  }
}

/// What nobody owns any more is removed on a worker, which takes its moment.
void Stage::awaitWorkers() {
  const auto isDone = [this] {
    const auto left = setting_.catalogue->describeAll("left", home_, home_);
    return (hasKeptFromRemoving() || std::ranges::all_of(left, mayBeLeft)) &&
           std::ranges::all_of(descriptors(),
                               [this](const auto& one) { return descriptorsBefore_.contains(one); });
  };
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  // The workers ring no bell, so the loop looks again by itself.
  while (std::chrono::steady_clock::now() < deadline) {
    if (headless::runUntil(*host_, isDone, 0.02)) break;
  }
}

std::set<std::string> Stage::descriptors() const {
  std::set<std::string> all;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    const fs::path target = fs::read_symlink(entry.path(), error);
    if (error || target.string().starts_with("/proc/")) continue;  // the folder that is being read
    all.insert(entry.path().filename().string() + " " + target.string());
  }
  return all;
}

}  // namespace vantorium::torture
