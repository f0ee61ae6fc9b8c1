#include "platform/foundation/async_block_operation.hpp"

#include <algorithm>
#include <exception>
#include <utility>

#include "platform/foundation/worker_pool.hpp"

namespace vantorium {

AsyncBlockOperation::AsyncBlockOperation(std::shared_ptr<BlockOperationQueue> queue, Block block)
    : operationQueue_(std::move(queue)), block_(std::move(block)) {}

AsyncBlockOperation::~AsyncBlockOperation() {
  try {
    leave();
  } catch (
      ...) {  // NOLINT(bugprone-empty-catch): the queue's completion block threw, with nobody left to tell
  }
}

void AsyncBlockOperation::start() {
  Block block;
  {
    const MutexLock lock(mutex_);
    if (isFinished_) return;
    isExecuting_ = true;
    block = std::exchange(block_, nullptr);
  }
  if (block) block(shared_from_this());
}

void AsyncBlockOperation::finish() {
  const auto self = shared_from_this();  // the queue's may be the last reference
  leave();
}

void AsyncBlockOperation::leave() {
  std::shared_ptr<BlockOperationQueue> queue;
  {
    const MutexLock lock(mutex_);
    if (isFinished_) return;
    isExecuting_ = false;
    isFinished_ = true;
    queue = std::exchange(operationQueue_, nullptr);
  }
  if (queue) queue->operationFinished(*this);
}

bool AsyncBlockOperation::isExecuting() const {
  const MutexLock lock(mutex_);
  return isExecuting_;
}

bool AsyncBlockOperation::isFinished() const {
  const MutexLock lock(mutex_);
  return isFinished_;
}

void BlockOperationQueue::setMaxConcurrentOperationCount(int count) {
  {
    const MutexLock lock(mutex_);
    maxConcurrentOperationCount_ = count;
  }
  startWaiting();
}

void BlockOperationQueue::setCompletionBlock(std::function<void()> completionBlock) {
  auto shared = std::make_shared<const std::function<void()>>(std::move(completionBlock));
  const MutexLock lock(mutex_);
  completionBlock_.swap(shared);  // what the old one captured goes without the lock held
}

void BlockOperationQueue::addOperation(std::shared_ptr<AsyncBlockOperation> operation) {
  addOperations({std::move(operation)});
}

void BlockOperationQueue::addOperations(const std::vector<std::shared_ptr<AsyncBlockOperation>>& operations) {
  Entries added;
  for (const auto& each : operations) added.push_back({each.get(), each, each});
  {
    const MutexLock lock(mutex_);
    waiting_.splice(waiting_.end(), added);
  }
  startWaiting();
}

std::vector<std::shared_ptr<AsyncBlockOperation>> BlockOperationQueue::operations() const {
  const MutexLock lock(mutex_);
  std::vector<std::shared_ptr<AsyncBlockOperation>> all;
  for (const Entries* entries : {&executing_, &waiting_}) {
    for (const Entry& each : *entries) {
      if (auto operation = each.operation.lock()) all.push_back(std::move(operation));
    }
  }
  return all;
}

void BlockOperationQueue::operationFinished(const AsyncBlockOperation& operation) {
  std::shared_ptr<const std::function<void()>> completionBlock;
  Entries left;  // goes without the lock held
  {
    // Leaving the list and looking whether it is empty are one step: only the last one to leave sees it
    // empty.
    const MutexLock lock(mutex_);
    for (Entries* entries : {&executing_, &waiting_}) {
      const auto entry = std::find_if(entries->begin(), entries->end(),
                                      [&](const Entry& one) { return one.key == &operation; });
      if (entry != entries->end()) left.splice(left.end(), *entries, entry);
    }
    if (left.empty()) return;  // it was never added
    if (executing_.empty() && waiting_.empty()) completionBlock = completionBlock_;
  }
  startWaiting();
  if (completionBlock && *completionBlock) (*completionBlock)();
}

void BlockOperationQueue::startWaiting() noexcept {
  while (auto operation = takeNext()) {
    try {
      workers::async([operation] { operation->start(); });
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
      // Without memory to start it, letting go of it is what finishes it.
    }
  }
}

std::shared_ptr<AsyncBlockOperation> BlockOperationQueue::takeNext() {
  const MutexLock lock(mutex_);
  const bool hasSlot = maxConcurrentOperationCount_ < 0 ||
                       executing_.size() < static_cast<std::size_t>(maxConcurrentOperationCount_);
  if (waiting_.empty() || !hasSlot) return nullptr;
  executing_.splice(executing_.end(), waiting_, waiting_.begin());
  return std::exchange(executing_.back().waiting, nullptr);
}

}  // namespace vantorium
