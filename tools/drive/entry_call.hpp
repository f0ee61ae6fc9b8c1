#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include <vantorium/dispatch_queue.hpp>

#include "drive/command.hpp"
#include "drive/stage.hpp"

namespace vantorium::drive {

/// One call of an entry point: makes it on the thread that the command names, and knows where a completion
/// of it runs. Made on the main thread.
class EntryCall {
 public:
  EntryCall(Stage& stage, const Command& command);

  /// Where the call wants its completion: null for the main queue. A "background" queue runs each piece of
  /// work on a thread of its own, but in its place among the work of the main queue, so that a script is
  /// played in the same order every time.
  std::shared_ptr<DispatchQueue> queue() const;

  /// Makes the call, on the main thread or on another, which is waited for.
  void make(const std::function<void()>& call) const;

  /// Prints the completion.
  Sdk::Completion completion() const;
  /// Prints the completion with more fields. Any thread.
  void complete(bool success, const std::optional<Error>& error, nlohmann::json more) const;
  /// Prints the answer of an entry point without completion.
  void result(nlohmann::json value) const;

 private:
  struct Site {
    std::thread::id mainThread = std::this_thread::get_id();
    std::thread::id caller;
    std::atomic<bool> isInside{false};
    const char* threadName() const;
  };

  Stage& stage_;
  std::string name_;
  nlohmann::json tag_;
  bool isFromBackground_;
  bool isQueueBackground_;
  std::shared_ptr<Site> site_ = std::make_shared<Site>();
};

}  // namespace vantorium::drive
