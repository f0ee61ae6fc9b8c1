#include "torture/report.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <regex>
#include <sstream>
#include <utility>

namespace vantorium::torture {

namespace {

constexpr std::size_t framesShown = 8;
constexpr std::size_t numbersShown = 12;

std::string nameOf(const Fault& fault) { return fmt::format("{}:{}", fault.kind, fault.name); }

std::string firstLineOf(const std::string& text) { return text.substr(0, text.find('\n')); }

/// A line each; the last is how it ended, if that was not as it should be.
std::vector<std::string> problemsOf(const Record& record) {
  std::vector<std::string> problems;
  std::istringstream text(record.problems.text());
  for (std::string line; std::getline(text, line);)  // the work is done twice, and may be twice wrong
    if (std::find(problems.begin(), problems.end(), line) == problems.end()) problems.push_back(line);
  if (record.signal == SIGQUIT || record.signal == SIGKILL) {
    problems.push_back(fmt::format("hang in: {}", record.step.data()));
  } else if (record.signal != 0 || !record.hasEnded) {
    problems.push_back(fmt::format("crash ({}) in: {}", strsignal(record.signal), record.step.data()));
  }
  return problems;
}

}  // namespace

void Report::add(const Scenario& scenario, const Run& run) {
  const Record& record = run.record();
  row_.name = fmt::format("{:<9} {}", scenario.name, nameOf(run.fault()));
  ++row_.runs;
  row_.operations = std::max<std::uint64_t>(row_.operations, record.order.count);
  const bool isAbort = record.signal == SIGABRT && std::strcmp(run.fault().kind, "memory") == 0;
  std::vector<std::string> problems = problemsOf(record);
  const bool isViolated = problems.size() > (isAbort ? 1 : 0);
  if (!problems.empty()) note(scenario, run, std::move(problems), !isViolated);
  ++(isAbort ? row_.aborted : record.hasSucceeded ? row_.succeeded : row_.failed);
  row_.violated += isViolated ? 1 : 0;
  violations_ += isViolated ? 1 : 0;
}

void Report::note(const Scenario& scenario, const Run& run, std::vector<std::string> problems,
                  bool isAllowed) {
  const Record& record = run.record();
  Finding finding{.scenario = scenario.name,
                  .fault = nameOf(run.fault()),
                  .operation = record.order.operation.data(),
                  .complaint = firstLineOf(run.complaints()),
                  .problems = std::move(problems),
                  .number = run.number(),
                  .isAllowed = isAllowed,
                  .struck = {record.order.frames.begin(), record.order.frames.begin() + record.order.depth},
                  .ended = {record.frames.begin(), record.frames.begin() + record.depth}};
  symbols_.want(finding.struck);
  symbols_.want(finding.ended);
  findings_.push_back(std::move(finding));
}

void Report::printHead() {
  fmt::print("{:<29} {:>10} {:>6} {:>6} {:>6} {:>6} {:>9}\n", "scenario, fault", "operations", "runs", "well",
             "error", "abort", "violated");
}

void Report::printRow() {
  const Row row = std::exchange(row_, {});
  fmt::print("{:<29} {:>10} {:>6} {:>6} {:>6} {:>6} {:>9}\n", row.name, row.operations, row.runs,
             row.succeeded, row.failed, row.aborted, row.violated);
  std::fflush(stdout);
}

void Report::printFindings() {
  symbols_.resolve();
  printFindings(false);
  printFindings(true);
}

void Report::printFindings(bool areAllowed) {
  static const std::regex numbers("[0-9]+");
  std::map<std::string, std::vector<const Finding*>> groups;
  for (const Finding& finding : findings_) {
    if (finding.isAllowed != areAllowed) continue;
    const std::string what =
        std::regex_replace(fmt::format("{}", fmt::join(finding.problems, "\n  ")), numbers, "#");
    groups[fmt::format("{} {} {}", finding.scenario, what, placeOf(finding))].push_back(&finding);
  }
  if (!groups.empty()) fmt::print("\n== {}\n", areAllowed ? "Ended for want of memory" : "Violations");
  for (const auto& [name, group] : groups) {
    const Finding& first = *group.front();
    fmt::print("\n{}: {}\n  {} times:", first.scenario, fmt::join(first.problems, "\n  "), group.size());
    for (std::size_t i = 0; i < std::min(group.size(), numbersShown); ++i)
      fmt::print(" {}:{}", group[i]->fault, group[i]->number);
    fmt::print("{}\n  repeat: scripts/torture --only {}:{}:{}\n", group.size() > numbersShown ? " …" : "",
               first.scenario, first.fault, first.number);
    if (!first.ended.empty() && !first.complaint.empty()) fmt::print("  said: {}\n", first.complaint);
    printFrames(fmt::format("struck {} in", first.operation).c_str(), first.struck);
    if (!first.isAllowed) printFrames("ended in", first.ended);
  }
}

/// Memory is asked for everywhere: there, who had called counts, else what failed.
std::string Report::placeOf(const Finding& finding) const {
  const auto frames = symbols_.ownFrames(finding.struck);
  if (frames.empty()) return {};
  return finding.fault.starts_with("memory") ? frames.back() : frames.front();
}

void Report::printFrames(const char* label, const std::vector<void*>& frames) const {
  const auto names = symbols_.ownFrames(frames);
  if (names.empty()) return;
  fmt::print("  {}\n", label);
  for (std::size_t i = 0; i < std::min(names.size(), framesShown); ++i) fmt::print("    {}\n", names[i]);
}

}  // namespace vantorium::torture
