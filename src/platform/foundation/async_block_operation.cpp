#include "platform/foundation/async_block_operation.hpp"

#include <algorithm>
#include <utility>

#include "platform/foundation/worker_pool.hpp"

namespace vantorium {

AsyncBlockOperation::AsyncBlockOperation(std::shared_ptr<BlockOperationQueue> queue, Block block)
    : operationQueue_(std::move(queue)), block_(std::move(block)) {}

AsyncBlockOperation::~AsyncBlockOperation() { leave(); }

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
  const MutexLock lock(mutex_);
  maxConcurrentOperationCount_ = count;
  startWaiting();
}

void BlockOperationQueue::setCompletionBlock(std::function<void()> completionBlock) {
  const MutexLock lock(mutex_);
  completionBlock_.swap(completionBlock);  // what the old one captured goes without the lock held
}

void BlockOperationQueue::addOperation(std::shared_ptr<AsyncBlockOperation> operation) {
  addOperations({std::move(operation)});
}

void BlockOperationQueue::addOperations(const std::vector<std::shared_ptr<AsyncBlockOperation>>& operations) {
  const MutexLock lock(mutex_);
  waiting_.insert(waiting_.end(), operations.begin(), operations.end());
  startWaiting();
}

std::vector<std::shared_ptr<AsyncBlockOperation>> BlockOperationQueue::operations() const {
  const MutexLock lock(mutex_);
  std::vector<std::shared_ptr<AsyncBlockOperation>> all;
  for (const Executing& each : executing_) {
    if (auto operation = each.operation.lock()) all.push_back(std::move(operation));
  }
  all.insert(all.end(), waiting_.begin(), waiting_.end());
  return all;
}

void BlockOperationQueue::operationFinished(const AsyncBlockOperation& operation) {
  std::function<void()> completionBlock;
  {
    // Leaving the list and looking whether it is empty are one step: only the last one to leave sees it
    // empty.
    const MutexLock lock(mutex_);
    const auto left = std::erase_if(executing_, [&](const Executing& one) { return one.key == &operation; }) +
                      std::erase_if(waiting_, [&](const auto& one) { return one.get() == &operation; });
    if (left == 0) return;  // it was never added
    if (executing_.empty() && waiting_.empty()) completionBlock = completionBlock_;
    startWaiting();
  }
  if (completionBlock) completionBlock();
}

void BlockOperationQueue::startWaiting() {
  const auto hasSlot = [this]() REQUIRES(mutex_) {
    return maxConcurrentOperationCount_ < 0 ||
           executing_.size() < static_cast<std::size_t>(maxConcurrentOperationCount_);
  };
  while (!waiting_.empty() && hasSlot()) {
    auto operation = std::move(waiting_.front());
    waiting_.pop_front();
    executing_.push_back({operation.get(), operation});
    workers::async([operation = std::move(operation)] { operation->start(); });
  }
}

}  // namespace vantorium
