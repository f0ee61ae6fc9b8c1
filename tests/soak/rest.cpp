// Bringing everything to rest, so that what is owed must have come and what is left is what the SDK keeps.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

#include "soak/scenario.hpp"

namespace vantorium::soak {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

constexpr double longPatience = 10;    // seconds of real time that something may take
constexpr double shortPatience = 0.5;  // of which the kind is known not to come
constexpr std::uint64_t known = 2;     // times that a kind has been missed, to know it

double secondsSince(std::chrono::steady_clock::time_point moment) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - moment).count();
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

/// Whether the file is there and made of what it should be. A page of another kind in its place is the
/// service's doing if it said that all was well, but never if it said that it was not.
void Scenario::checkFile(const std::string& path, const std::string& made, const std::string& what) {
  const bool isNative = what == "asset" || what == "icon";
  if (!fs::is_regular_file(path)) {
    // The application keeps the paths of a native ad itself, so a cleaner may have been there.
    if (!isNative) books_.violate(what + " not there", fmt::format("{} at \"{}\"", made, path));
    return;
  }
  const std::string content = contentOf(path);
  const std::size_t mark = content.find("made of ");
  if (mark != std::string::npos) {
    const std::string of = content.substr(mark + 8, content.find('\n', mark) - mark - 8);
    if (of != made && !made.starts_with(of))
      books_.violate(what + " of another ad", fmt::format("{} in place of {}", of, made));
  } else if (content.empty() && !isNative && what == "film") {
    books_.violate(what + " of 0 bytes", path);
  } else if (content.find("<title>404") != std::string::npos ||
             content.find("<title>Status ") != std::string::npos) {
    books_.violate(what + " that is an error's page", path);
  }
}

/// Has the main queue run until it is done, at most as long as such a thing may take.
bool Scenario::poll(const std::function<bool()>& isDone, const char* kind) {
  constexpr double pause = 0.002;  // seconds
  const auto& violations = books_.violations();
  const auto missed = violations.find(kind);
  const double patience =
      missed != violations.end() && missed->second >= known ? shortPatience : longPatience;
  const auto started = std::chrono::steady_clock::now();
  while (!isDone()) {
    if (secondsSince(started) > patience) return false;
    application_.runUntil([] { return false; }, pause);
  }
  return true;
}

void Scenario::rest() {
  service_.setFaults(json::array());
  application_.setOnline(true);
  offlineUntil_ = 0;
  closeFront();
  dropNativeAds(0);
  poll(
      [this] {
        application_.configureIfNeeded();
        return Vantorium::isConfigured();
      },
      "not configured");
  if (!Vantorium::isConfigured()) books_.violate("not configured", "on a good day");
  settle();
  awaitReadiness();
  settle();
  awaitDeletion();
  takeSample();
}

void Scenario::takeSample() {
  Sample sample = measure(books_.round, cachesOf(options_));
  sample.seconds = secondsSince(started_);
  sample.completions = application_.calls().answered();
  sample.reports = books_.reports();
  sample.rewards = books_.rewards();
  sample.lost = books_.lost();
  sample.doubled = books_.doubled();
  for (const auto& [kind, number] : books_.violations()) sample.violations += number;
  samples_.push_back(sample);
}

/// Lets hours pass until auto-caching has filled its placements by itself.
void Scenario::awaitReadiness() {
  constexpr const char* kind = "not ready after a good day";
  const auto isReady = [] {
    return std::ranges::all_of(std::array{"rewarded", "interstitial", "game"},
                               [](const char* each) { return Vantorium::isCampaignReady(each); });
  };
  int hours = 0;
  const bool isDone = poll(
      [&] {
        if (!isReady() && hours < 24) {
          application_.advance(3600);
          ++hours;
          application_.runUntil([] { return false; }, 0.01);
        }
        return isReady();
      },
      kind);
  if (isDone) return;
  for (const char* each : {"rewarded", "interstitial", "game"}) {
    if (Vantorium::isCampaignReady(each)) continue;
    books_.violate(kind, each);
    application_.precache(each);
  }
}

void Scenario::settle() {
  if (!poll([this] { return application_.calls().open().empty(); }, "completion lost")) {
    for (const auto& call : application_.calls().open()) books_.violate("completion lost", call);
    application_.calls().forgetOpen();
  }
  if (const auto again = application_.calls().takeAnsweredAgain())
    books_.violate("completion called again", fmt::format("{} times", again));
  closeFront();
  json tally;
  poll(
      [&] {
        if (books_.settleReports(tally = service_.tally(books_.owedImpressions()))) return true;
        application_.advance(60);
        return false;
      },
      "report lost");
  books_.closeReports(tally);
  poll(
      [&] {
        if (books_.settleRewards(tally = service_.tally())) return true;
        application_.advance(600);
        return false;
      },
      "reward lost");
  books_.closeRewards(tally);
  poll([this] { return books_.settleClicks(); }, "click told wrongly");
  books_.closeClicks();
  constexpr std::size_t longest = 4096;
  if (tally["longestTarget"] > longest)
    books_.violate("target of a request too long", tally["longestTarget"].dump());
}

/// What nobody holds any more is to leave the disk.
void Scenario::awaitDeletion() {
  constexpr const char* kind = "file of a native ad that nobody holds";
  const auto isThere = [](const fs::path& path) { return fs::exists(path); };
  poll([&] { return std::ranges::none_of(abandoned_, isThere); }, kind);
  for (const auto& path : abandoned_) {
    if (isThere(path)) books_.violate(kind, path);
  }
  abandoned_.clear();
}

}  // namespace vantorium::soak
