#include <gtest/gtest.h>

#include <thread>

#include "gtk/support/desktop.hpp"
#include "hosts/gtk/clock.hpp"
#include "hosts/gtk/main_queue.hpp"

namespace vantorium::test {
namespace {

TEST(MainQueueTest, RunsWorkOfAllThreadsInOrderAndNeverInside) {
  gtk::MainQueue queue;
  std::vector<int> order;
  bool isOnMain = true;
  const auto main = std::this_thread::get_id();
  std::thread other([&] {
    for (int i = 0; i < 100; ++i) {
      queue.async([&, i] {
        order.push_back(i);
        isOnMain &= std::this_thread::get_id() == main;
      });
    }
  });
  other.join();
  EXPECT_TRUE(order.empty());
  queue.async([&] {
    queue.async([&] { order.push_back(101); });
    order.push_back(100);
  });
  ASSERT_TRUE(waitFor([&] { return order.size() == 102; }));
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
  EXPECT_TRUE(isOnMain);
}

TEST(MainQueueTest, WorkThatThrowsIsDroppedAndTheRestGoesOn) {
  gtk::MainQueue queue;
  gtk::MainLoopClock clock;
  int rang = 0;
  bool followed = false;
  const auto timer = clock.schedule(Seconds{0}, true, [&] {
    if (++rang == 1) throw std::bad_alloc();
  });
  queue.async([] { throw 1; });
  queue.async([&] { followed = true; });
  EXPECT_TRUE(waitFor([&] { return followed && rang > 1; }));
}

TEST(MainQueueTest, ANestedLoopGoesOnWithWhatFollows) {
  gtk::MainQueue queue;
  bool followed = false, cameFirst = false;
  queue.async([&] { cameFirst = waitFor([&] { return followed; }); });
  queue.async([&] { followed = true; });
  ASSERT_TRUE(waitFor([&] { return cameFirst; }));
}

TEST(MainQueueTest, DropsWhatHasNotRun) {
  auto held = std::make_shared<int>();
  {
    gtk::MainQueue queue;
    queue.async([held] { FAIL(); });
  }
  EXPECT_EQ(held.use_count(), 1);
  settle();
}

TEST(ClockTest, TimersRunOnTheMainThreadUntilDropped) {
  gtk::MainLoopClock clock;
  int repeats = 0, once = 0, dropped = 0;
  std::unique_ptr<Timer> repeating, single, other;
  std::thread([&] {
    repeating = clock.schedule(Seconds(0.01), true, [&] {
      if (++repeats == 3) repeating.reset();
    });
    single = clock.schedule(Seconds(0.01), false, [&] { ++once; });
  }).join();
  other = clock.schedule(Seconds(0), true, [&] { ++dropped; });
  other.reset();
  const auto last = clock.schedule(Seconds(0.2), false, [&] { repeats += 100; });
  ASSERT_TRUE(waitFor([&] { return repeats >= 100; }));
  EXPECT_EQ(repeats, 103);
  EXPECT_EQ(once, 1);
  EXPECT_EQ(dropped, 0);
}

}  // namespace
}  // namespace vantorium::test
