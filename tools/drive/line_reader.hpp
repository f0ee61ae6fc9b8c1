#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "platform/foundation/file_descriptor.hpp"

namespace vantorium::drive {

/// Lines of a file, pipe or terminal, read on a thread of its own so that the main thread is free meanwhile.
class LineReader {
 public:
  /// A longer line ends the input, cut off there.
  static constexpr std::size_t longestLine = std::size_t{1} << 20U;

  /// Reads from `input`, which stays the caller's and open. `didRead` is called on the reading thread
  /// whenever `isReady` may have become true.
  LineReader(int input, std::function<void()> didRead);
  /// Ends the reading at once, also of an input that never ends.
  ~LineReader();
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  struct Line {
    std::size_t number = 0;  ///< from 1
    std::string text;        ///< without its end
    bool isTooLong = false;
  };
  /// Whether `take` would not have to wait: a line is there, or the end.
  bool isReady() const;
  /// Waits for the next line; none at the end.
  std::optional<Line> take();

 private:
  void read();
  bool waitForInput() const;
  /// Takes in some bytes; false when no more are wanted.
  bool digest(const char* bytes, std::size_t count);
  bool add(std::string text, bool isTooLong);
  void finish();

  const int input_;
  const std::function<void()> didRead_;
  FileDescriptor stop_;  ///< readable once the reading is to end
  std::string partial_;  ///< of the reading thread
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Line> lines_;
  std::size_t count_ = 0;
  bool hasEnded_ = false;
  bool isStopped_ = false;
  std::thread thread_;
};

}  // namespace vantorium::drive
