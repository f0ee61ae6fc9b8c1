#pragma once

#include <map>
#include <string>
#include <vector>

#include "torture/run.hpp"
#include "torture/symbols.hpp"

namespace vantorium::torture {

/// What all runs came to.
class Report {
 public:
  void add(const Scenario& scenario, const Run& run);
  /// Prints the head of the table.
  static void printHead();
  /// Prints what the runs since the last row came to.
  void printRow();
  /// Prints what was found in all of them, like with like.
  void printFindings();
  /// Whether anything was found that must not be. For want of memory a process may end.
  bool isClean() const { return violations_ == 0; }

 private:
  struct Row {
    std::string name;
    std::uint64_t operations = 0;
    int runs = 0;
    int succeeded = 0;
    int failed = 0;
    int aborted = 0;
    int violated = 0;
  };
  /// A run that was not as it should be.
  struct Finding {
    std::string scenario;
    std::string fault;
    std::string operation;
    std::string complaint;
    std::vector<std::string> problems;
    std::uint64_t number = 0;
    bool isAllowed = false;
    std::vector<void*> struck;  ///< where the fault came
    std::vector<void*> ended;   ///< where the process ended
  };

  void note(const Scenario& scenario, const Run& run, std::vector<std::string> problems, bool isAllowed);
  void printFindings(bool areAllowed);
  std::string placeOf(const Finding& finding) const;
  void printFrames(const char* label, const std::vector<void*>& frames) const;

  Row row_;
  std::vector<Finding> findings_;
  int violations_ = 0;
  Symbols symbols_;
};

}  // namespace vantorium::torture
