#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

/// What happened and when, as lines of JSON in a file: for demonstrations and for finding faults. Until it is
/// opened it notes nothing. Main thread only.
class Timeline {
 public:
  using Detail = std::pair<std::string_view, std::string>;

  /// Replaces the file. False when it cannot be written.
  bool open(const std::filesystem::path& file);
  /// "who" is whose doing it was: the game's, the delegate's, a completion's.
  void note(std::string_view who, std::string_view what, std::initializer_list<Detail> details = {});

 private:
  std::ofstream file_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};
