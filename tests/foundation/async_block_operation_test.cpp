#include "platform/foundation/async_block_operation.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>

#include <vantorium/dispatch_queue.hpp>

#include "platform/foundation/worker_pool.hpp"

namespace vantorium {
namespace {

using Operation = std::shared_ptr<AsyncBlockOperation>;

constexpr auto patience = std::chrono::seconds(30);

/// The operations that have been started, in order.
class Started {
 public:
  AsyncBlockOperation::Block block() {
    return [this](const Operation& operation) {
      const std::lock_guard lock(mutex_);
      started_.push_back(operation);
      changed_.notify_all();
    };
  }
  std::vector<Operation> wait(std::size_t count) {
    std::unique_lock lock(mutex_);
    EXPECT_TRUE(changed_.wait_for(lock, patience, [&] { return started_.size() >= count; }));
    return started_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Operation> started_;
};

TEST(BlockOperationQueueTest, TheLastToFinishCompletesTheBatchOnce) {
  auto queue = std::make_shared<BlockOperationQueue>();
  Started started;
  int completions = 0;
  queue->setCompletionBlock([&] { ++completions; });
  std::vector<Operation> batch;
  for (int i = 0; i < 3; ++i) batch.push_back(std::make_shared<AsyncBlockOperation>(queue, started.block()));
  EXPECT_TRUE(batch[0]->isAsynchronous());
  EXPECT_FALSE(batch[0]->isExecuting());
  queue->addOperations(batch);
  started.wait(3);
  EXPECT_TRUE(batch[0]->isExecuting());
  for (const int i : {1, 2, 0}) {
    EXPECT_EQ(completions, 0);
    batch[static_cast<std::size_t>(i)]->finish();
  }
  EXPECT_EQ(completions, 1);
  batch[0]->finish();
  EXPECT_EQ(completions, 1);
  EXPECT_FALSE(batch[0]->isExecuting());
  EXPECT_TRUE(batch[0]->isFinished());
  EXPECT_TRUE(queue->operations().empty());
  EXPECT_EQ(queue.use_count(), 1);  // no finished operation keeps it
}

TEST(BlockOperationQueueTest, AFinishedOperationFreesItsSlotForTheNext) {
  auto queue = std::make_shared<BlockOperationQueue>();
  Started started;
  queue->setMaxConcurrentOperationCount(2);
  std::vector<Operation> batch;
  for (int i = 0; i < 4; ++i) batch.push_back(std::make_shared<AsyncBlockOperation>(queue, started.block()));
  queue->addOperations(batch);
  started.wait(2);
  EXPECT_EQ(queue->operations(), batch);
  batch[3]->finish();  // before its turn: it never starts
  batch[1]->finish();
  EXPECT_EQ(started.wait(3).back(), batch[2]);
  EXPECT_EQ(queue->operations(), (std::vector<Operation>{batch[0], batch[2]}));
  batch[0]->finish();
  batch[2]->finish();
  EXPECT_EQ(started.wait(3).size(), 3U);
}

TEST(BlockOperationQueueTest, OperationsWithoutAQueueOrACompletionFinishQuietly) {
  auto alone = std::make_shared<AsyncBlockOperation>(nullptr, [](const Operation& self) { self->finish(); });
  alone->start();
  EXPECT_TRUE(alone->isFinished());
  auto queue = std::make_shared<BlockOperationQueue>();
  std::promise<void> ran;
  queue->addOperation(std::make_shared<AsyncBlockOperation>(queue, [&](const Operation& self) {
    self->finish();
    ran.set_value();
  }));
  EXPECT_EQ(ran.get_future().wait_for(patience), std::future_status::ready);
}

TEST(BlockOperationQueueTest, WorkThatIsDroppedEndsItsOperation) {
  auto queue = std::make_shared<BlockOperationQueue>();
  queue->setMaxConcurrentOperationCount(1);
  std::promise<void> completed;
  queue->setCompletionBlock([&] { completed.set_value(); });
  // The first one's work forgets it; only then does the second have its turn.
  queue->addOperations({std::make_shared<AsyncBlockOperation>(queue, [](const Operation&) {}),
                        std::make_shared<AsyncBlockOperation>(
                            queue, [](const Operation& operation) { operation->finish(); })});
  {
    const AsyncBlockOperation neverAdded(queue, [](const Operation&) {});
  }
  ASSERT_EQ(completed.get_future().wait_for(patience), std::future_status::ready);
  EXPECT_TRUE(queue->operations().empty());
}

TEST(BlockOperationQueueTest, ThousandsThatFinishAtOnceCompleteOnceAndAreFreed) {
  constexpr int count = 10'000;
  auto queue = std::make_shared<BlockOperationQueue>();
  queue->setMaxConcurrentOperationCount(50);
  std::atomic<int> ran = 0;
  std::atomic<int> completions = 0;
  std::promise<void> completed;
  queue->setCompletionBlock([&] {
    if (++completions == 1) completed.set_value();
  });
  {
    std::vector<Operation> batch;
    for (int i = 0; i < count; ++i) {
      batch.push_back(std::make_shared<AsyncBlockOperation>(queue, [&ran, i](const Operation& self) {
        ++ran;
        if (i % 2 == 0) return self->finish();
        workers::async([self] { self->finish(); });
      }));
    }
    queue->addOperations(batch);
  }
  ASSERT_EQ(completed.get_future().wait_for(patience), std::future_status::ready);
  EXPECT_EQ(ran, count);
  EXPECT_EQ(completions, 1);
  EXPECT_TRUE(queue->operations().empty());
}

TEST(SerialQueueTest, RunsInOrderOneAtATimeAndAfterItsLastReference) {
  auto queue = DispatchQueue::serial("a label longer than a thread's name");
  std::vector<int> order;  // unguarded on purpose
  std::promise<void> done;
  for (int i = 0; i < 1000; ++i) queue->async([&order, i] { order.push_back(i); });
  queue->async([&] { done.set_value(); });
  queue.reset();
  ASSERT_EQ(done.get_future().wait_for(patience), std::future_status::ready);
  EXPECT_EQ(order.size(), 1000U);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

}  // namespace
}  // namespace vantorium
