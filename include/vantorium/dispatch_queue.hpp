#pragma once

#include <functional>
#include <memory>
#include <string>

#include <vantorium/export.h>

namespace vantorium {

/// Runs blocks one at a time, in the order in which they were handed over. Entry points that take a queue
/// call their completion on it; a null queue stands for the main queue of the host.
class VANTORIUM_API DispatchQueue {
 public:
  virtual ~DispatchQueue() = default;

  /// Hands `work` over and returns at once; it never runs inside this call. May be called on any thread. Work
  /// that has not run when the process ends, or when the host's main loop has ended, is dropped. Throws
  /// nothing but std::bad_alloc, and has then taken nothing.
  virtual void async(std::function<void()> work) = 0;

  /// A new queue served by the SDK's few worker threads, so its work must not wait for a completion of the
  /// SDK. The label shows in debuggers and traces. Work already handed over still runs when the last
  /// reference to the queue is gone. Work that throws is dropped, and the next one runs.
  static std::shared_ptr<DispatchQueue> serial(std::string label);
};

}  // namespace vantorium
