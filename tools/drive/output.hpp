#pragma once

#include <cstdio>
#include <deque>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <thread>
#include <vector>

#include "drive/placeholders.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium::drive {

/// Prints events, one line each as they happen, and remembers them for those who wait. Any thread.
///
/// With placeholders, lines must come in the same order in every run. What other threads write to the console
/// is then held back and printed, sorted, before what the main thread does of their doing.
class Output {
 public:
  /// The thread that makes it is the main thread. Without placeholders lines are printed as they are.
  Output(std::FILE* file, std::unique_ptr<Placeholders> placeholders);

  void print(const nlohmann::json& event) EXCLUDES(mutex_);
  /// How many lines have been held back so far.
  std::size_t heldSoFar() const EXCLUDES(mutex_);
  /// Prints those of the first `count` lines ever held back that are still held.
  void release(std::size_t count) EXCLUDES(mutex_);
  /// Looks from line `from` on for one that has all of the fields and was not claimed before; moves `from` to
  /// where to look next. A field that is an object asks for what it holds, any other for the same value.
  bool claim(const nlohmann::json& fields, std::size_t& from) EXCLUDES(mutex_);
  /// The last line, claimed by nobody, that has all of the fields but one; null when none has.
  nlohmann::json nearest(const nlohmann::json& fields) const EXCLUDES(mutex_);
  /// Nothing is printed from now on.
  void close() EXCLUDES(mutex_);
  /// Whether something could not be written: nobody reads any more, or the disk is full.
  bool hasFailed() const EXCLUDES(mutex_);

 private:
  /// An event as it happened and, when that is something else, as it was printed; both null once claimed.
  struct Line {
    nlohmann::json event, printed;
    bool has(const nlohmann::json& fields) const;
  };
  /// For callers that hold the mutex.
  Line lineOf(const nlohmann::json& event);
  void write(Line line) REQUIRES(mutex_);
  void writeHeld(std::size_t count) REQUIRES(mutex_);

  std::FILE* const file_;
  const std::unique_ptr<Placeholders> placeholders_;
  const std::thread::id mainThread_ = std::this_thread::get_id();
  mutable Mutex mutex_;
  std::deque<Line> lines_ GUARDED_BY(mutex_);
  std::vector<nlohmann::json> held_ GUARDED_BY(mutex_);
  std::size_t released_ GUARDED_BY(mutex_) = 0;  ///< of those held back
  bool isClosed_ GUARDED_BY(mutex_) = false;
  bool hasFailed_ GUARDED_BY(mutex_) = false;
};

}  // namespace vantorium::drive
