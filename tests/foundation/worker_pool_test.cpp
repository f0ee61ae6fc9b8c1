#include "platform/foundation/worker_pool.hpp"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

#include <vantorium/dispatch_queue.hpp>

#include "support/failing_allocations.hpp"

namespace vantorium {
namespace {

constexpr auto patience = std::chrono::seconds(30);

std::string threadName() {
  std::array<char, 16> name{};
  pthread_getname_np(pthread_self(), name.data(), name.size());
  return name.data();
}

/// Waits for work that was handed over after all else.
template <typename Answer>
Answer answerOf(const std::shared_ptr<DispatchQueue>& queue, std::function<Answer()> ask) {
  auto promise = std::make_shared<std::promise<Answer>>();
  auto answer = promise->get_future();
  queue->async([promise, ask = std::move(ask)] { promise->set_value(ask()); });
  return answer.wait_for(patience) == std::future_status::ready ? answer.get() : Answer{};
}

TEST(SerialQueueTest, KeepsItsOrderAmongManyWhoHandOver) {
  const auto queue = DispatchQueue::serial("a label that is too long");
  EXPECT_EQ(answerOf<std::string>(queue, threadName), "a label that is");
  constexpr int works = 2000;
  std::array<std::vector<int>, 3> done;  // by who handed over; written by one work at a time
  std::vector<std::thread> threads;
  for (auto& mine : done) {
    threads.emplace_back([&] {
      for (int i = 0; i < works; ++i) queue->async([&mine, i] { mine.push_back(i); });
    });
  }
  for (auto& thread : threads) thread.join();
  ASSERT_TRUE(answerOf<bool>(queue, [] { return true; }));
  for (const auto& mine : done) {
    EXPECT_EQ(mine.size(), static_cast<std::size_t>(works));
    EXPECT_TRUE(std::ranges::is_sorted(mine));
  }
}

TEST(SerialQueueTest, WorkIsDoneAfterTheQueueIsGone) {
  std::promise<void> may, done;
  {
    const auto queue = DispatchQueue::serial("short-lived");
    queue->async([&] { may.get_future().wait(); });
    queue->async([&] { done.set_value(); });
  }
  may.set_value();
  EXPECT_EQ(done.get_future().wait_for(patience), std::future_status::ready);
}

TEST(WorkerTest, WorkThatThrowsIsDroppedAndTheNextRuns) {
  const auto queue = DispatchQueue::serial("thrower");
  auto held = std::make_shared<int>();
  const std::weak_ptr<int> weak = held;
  queue->async([held = std::move(held)] { throw std::bad_alloc(); });
  queue->async([] { throw 7; });
  EXPECT_EQ(answerOf<std::string>(queue, [&] { return weak.expired() ? threadName() : "still held"; }),
            "thrower");
  // Every thread of the pool is hit several times, and all go on under their own name.
  for (int i = 0; i < 10; ++i) workers::async([] { throw std::runtime_error("out of luck"); });
  std::promise<std::string> name;
  workers::async([&] { name.set_value(threadName()); });
  EXPECT_EQ(name.get_future().get(), "vantorium");
}

TEST(WorkerTest, WithoutMemoryWorkIsTakenWholeOrNotAtAll) {
  if (!testing::FailingAllocations::isSupported) GTEST_SKIP() << "the sanitizer allocates";
  const auto queue = DispatchQueue::serial("half");
  std::atomic<int> ran = 0;
  const auto takesInTheEnd = [&](auto handOver) {
    for (int failures = 0;; ++failures) {
      std::function<void()> work = [&ran] { ++ran; };
      try {
        const testing::FailingAllocations after(failures);
        handOver(std::move(work));
        return failures;
      } catch (const std::bad_alloc&) {
      }
    }
  };
  EXPECT_GE(takesInTheEnd([&](auto work) { queue->async(std::move(work)); }), 2);
  EXPECT_EQ(answerOf<int>(queue, [&] { return ran.load(); }), 1);
  EXPECT_GE(takesInTheEnd([&](auto work) { workers::async(std::move(work)); }), 2);
  while (ran.load() < 2) std::this_thread::yield();  // it refers to what is here
}

}  // namespace
}  // namespace vantorium
