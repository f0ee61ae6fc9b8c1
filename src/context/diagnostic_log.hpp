#pragma once

#include <cstddef>
#include <deque>
#include <string>

namespace vantorium {

/// The newest lines of a log that would else grow as long as the application runs. One thread at a time.
class DiagnosticLog {
 public:
  /// What the lines may have together, each with its "\n".
  static constexpr std::size_t mostBytes = std::size_t{1} << 20U;
  /// Stands in the first line when older ones were dropped.
  static constexpr const char* dropNotice = "VANTORIUM LOG: older lines were dropped.\n";

  /// Adds a line, without its "\n", and drops the oldest ones that are too much then.
  void add(const std::string& line) {
    lines_.push_back(line + "\n");
    bytes_ += lines_.back().size();
    for (; bytes_ > mostBytes; lines_.pop_front()) {
      bytes_ -= lines_.front().size();
      hasDropped_ = true;
    }
  }

  /// All lines, each ended by "\n".
  std::string text() const {
    std::string all = hasDropped_ ? dropNotice : "";
    all.reserve(all.size() + bytes_);
    for (const std::string& line : lines_) all += line;
    return all;
  }

 private:
  std::deque<std::string> lines_;
  std::size_t bytes_ = 0;
  bool hasDropped_ = false;
};

}  // namespace vantorium
