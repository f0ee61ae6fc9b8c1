#pragma once

#include <functional>
#include <list>
#include <memory>
#include <vector>

#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

class BlockOperationQueue;

/// A piece of asynchronous work: its block starts the work and returns, and the operation stays executing
/// until the work calls `finish`, or lets go of it (as a queue does that is taken down with work in it).
/// Held by `std::shared_ptr`, while it executes by its work alone; every method may be called on any thread.
class AsyncBlockOperation : public std::enable_shared_from_this<AsyncBlockOperation> {
 public:
  /// Is given the operation; what it starts keeps that pointer and calls `finish` in the end.
  using Block = std::function<void(const std::shared_ptr<AsyncBlockOperation>& operation)>;

  AsyncBlockOperation() = delete;
  /// `queue` is the queue it will be added to, kept until the operation has finished. Without one the
  /// operation finishes without calling anything.
  AsyncBlockOperation(std::shared_ptr<BlockOperationQueue> queue, Block block);
  ~AsyncBlockOperation();
  AsyncBlockOperation(const AsyncBlockOperation&) = delete;
  AsyncBlockOperation& operator=(const AsyncBlockOperation&) = delete;

  /// Runs the block, synchronously, on this thread, and lets go of it. Called by the queue, once.
  void start();
  /// Ends the operation, whatever came of the work. When it is the last unfinished one of its queue, the
  /// queue's completion block runs inside this call. A second call does nothing.
  void finish();

  bool isExecuting() const;
  bool isFinished() const;
  /// Always true.
  bool isAsynchronous() const { return true; }

 private:
  void leave();

  mutable Mutex mutex_;
  bool isExecuting_ GUARDED_BY(mutex_) = false;
  bool isFinished_ GUARDED_BY(mutex_) = false;
  std::shared_ptr<BlockOperationQueue> operationQueue_ GUARDED_BY(mutex_);
  Block block_ GUARDED_BY(mutex_);
};

/// Starts its operations on worker threads in the order they were added, never more at a time than its limit.
/// Its completion block runs when no operation of the queue is unfinished. Held by `std::shared_ptr`; it
/// stays alive while any of its operations is unfinished. Every method may be called on any thread.
class BlockOperationQueue : public std::enable_shared_from_this<BlockOperationQueue> {
 public:
  /// No limit on the operations that execute at a time.
  static constexpr int unlimited = -1;

  BlockOperationQueue() = default;
  BlockOperationQueue(const BlockOperationQueue&) = delete;
  BlockOperationQueue& operator=(const BlockOperationQueue&) = delete;

  /// Initially `unlimited`. Zero starts nothing; a higher limit starts what waited for it.
  void setMaxConcurrentOperationCount(int count);
  /// Runs on the thread of the last `finish`, with no lock held, each time the queue has run dry. Set it
  /// before the first operation is added. A queue that never got an operation never calls it. The queue keeps
  /// the block, and what it captures, as long as it lives.
  void setCompletionBlock(std::function<void()> completionBlock);

  void addOperation(std::shared_ptr<AsyncBlockOperation> operation);
  /// Adds a whole batch before any of it can finish, so that the completion block runs once, for all of it.
  /// (Added one by one, the first may finish and complete the queue before the second is there.) Throws
  /// std::bad_alloc, and has then added nothing. An operation that no memory is left to start finishes
  /// without having run.
  void addOperations(const std::vector<std::shared_ptr<AsyncBlockOperation>>& operations);

  /// Those that have not finished, in the order they were added.
  std::vector<std::shared_ptr<AsyncBlockOperation>> operations() const;

 private:
  friend class AsyncBlockOperation;
  struct Entry {
    const AsyncBlockOperation* key;
    std::weak_ptr<AsyncBlockOperation> operation;
    std::shared_ptr<AsyncBlockOperation> waiting;  ///< null once it has been started
  };
  /// Entries move from list to list without taking memory.
  using Entries = std::list<Entry>;

  void operationFinished(const AsyncBlockOperation& operation) EXCLUDES(mutex_);
  /// Starts on the workers what has a free slot. Without the lock: an operation that cannot be started
  /// finishes at once, and asks for it.
  void startWaiting() noexcept EXCLUDES(mutex_);
  /// Null when nothing waits, or no slot is free.
  std::shared_ptr<AsyncBlockOperation> takeNext() EXCLUDES(mutex_);

  mutable Mutex mutex_;
  int maxConcurrentOperationCount_ GUARDED_BY(mutex_) = unlimited;
  std::shared_ptr<const std::function<void()>> completionBlock_ GUARDED_BY(mutex_);
  Entries executing_ GUARDED_BY(mutex_);
  Entries waiting_ GUARDED_BY(mutex_);
};

}  // namespace vantorium
