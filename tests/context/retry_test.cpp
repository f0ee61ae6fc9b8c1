#include "context/retry.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <new>
#include <thread>
#include <vector>

#include "hosts/headless/headless_host.hpp"
#include "platform/foundation/backoff.hpp"
#include "support/failing_allocations.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium {
namespace {

struct RetryTest : ::testing::Test {
  testing::TemporaryDirectory home;
  std::shared_ptr<headless::Host> host =
      std::make_shared<headless::Host>(headless::Host::Options{.home = home.path()});
  std::shared_ptr<SdkContext> context = std::make_shared<SdkContext>(host);
  Retry retry{context, Seconds{10}, Seconds{40}};
  int runs = 0;

  std::function<void()> counting() {
    return [this] { ++runs; };
  }
  void comeOnline() {
    context->tellOnline();
    host->loop().runPending();
  }
  /// Whether what is pending runs a fifth around `pause` from now.
  void expectRunAround(double pause) {
    const int before = runs;
    host->advance(0.79 * pause);
    EXPECT_EQ(runs, before) << pause;
    host->advance(0.42 * pause);
    EXPECT_EQ(runs, before + 1) << pause;
  }
};

TEST(BackoffTest, HasNoTwoInstallationsInStep) {
  std::vector<double> pauses(1000);
  for (double& each : pauses) each = Backoff::withChance(Seconds{1}).count();
  const auto [least, most] = std::ranges::minmax(pauses);
  EXPECT_GE(least, 0.8);
  EXPECT_LT(least, 0.85);
  EXPECT_GT(most, 1.15);
  EXPECT_LE(most, 1.2);
}

TEST_F(RetryTest, PausesGrowToALimitAndShrinkAfterReset) {
  for (const double pause : {10., 20., 40., 40.}) {
    retry.schedule(counting());
    EXPECT_TRUE(retry.isPending());
    expectRunAround(pause);
    EXPECT_FALSE(retry.isPending());
  }
  retry.schedule(Seconds{100}, counting());
  host->advance(99);
  EXPECT_EQ(runs, 4);
  host->advance(2);
  EXPECT_EQ(runs, 5);
  retry.schedule(counting());
  retry.reset();
  EXPECT_FALSE(retry.isPending());
  retry.schedule(counting());
  expectRunAround(10);
}

TEST_F(RetryTest, RunsOnceWhenTheDeviceComesOnline) {
  retry.schedule(counting());
  context->tellOnline();
  EXPECT_EQ(runs, 0) << "never inside a call";
  comeOnline();
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(host->loop().pendingTimers(), 0U);
  host->advance(100);
  EXPECT_EQ(runs, 1);
}

TEST_F(RetryTest, WhatIsReplacedOrDroppedIsDestroyedAndNeverRuns) {
  const auto held = std::make_shared<int>();
  const auto holding = [&] { return [this, held] { runs += 100; }; };
  retry.schedule(holding());
  retry.schedule(counting());
  EXPECT_EQ(held.use_count(), 1);
  comeOnline();
  EXPECT_EQ(runs, 1);
  retry.schedule(holding());
  retry.cancel();
  {
    Retry other(context, Seconds{1}, Seconds{1});
    other.schedule(holding());
  }
  retry.schedule(holding());
  context->end();
  EXPECT_FALSE(retry.isPending());
  retry.schedule(holding());
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(host->loop().pendingTimers(), 0U);
  comeOnline();
  host->advance(100);
  EXPECT_EQ(runs, 1);
}

TEST_F(RetryTest, WorkMayOwnTheRetryAndAskForMore) {
  auto owned = std::make_shared<Retry>(context, Seconds{1}, Seconds{1});
  const std::weak_ptr<Retry> weak = owned;
  owned->schedule([this, owned] {
    ++runs;
    owned->schedule([this, owned] { ++runs; });
  });
  owned.reset();
  host->advance(1.2);
  EXPECT_EQ(runs, 1);
  EXPECT_FALSE(weak.expired());
  comeOnline();
  EXPECT_EQ(runs, 2);
  EXPECT_TRUE(weak.expired());
}

TEST_F(RetryTest, NothingRunsTwiceWhateverRaces) {
  constexpr std::size_t rounds = 2000;
  std::array<std::atomic<int>, rounds> ran{};
  std::atomic<bool> isOver = false;
  std::thread worker([&] {
    for (std::size_t i = 0; i < rounds; ++i) {
      retry.schedule(Seconds{0}, [&count = ran.at(i)] { ++count; });
      context->tellOnline();
      if (i % 2 == 0) retry.cancel();
    }
    retry.schedule(Seconds{0}, counting());
    isOver = true;
    host->loop().wake();
  });
  EXPECT_TRUE(host->loop().runUntil([&] { return isOver && runs > 0; }));
  worker.join();
  EXPECT_TRUE(std::ranges::all_of(ran, [](const auto& count) { return count <= 1; }));
}

TEST_F(RetryTest, WithoutMemoryNothingStaysPending) {
  if (!testing::FailingAllocations::isSupported) GTEST_SKIP() << "the sanitizer allocates";
  bool isTaken = false;
  int failures = 0;
  for (; !isTaken; ++failures) {
    try {
      const testing::FailingAllocations after(failures);
      retry.schedule(counting());
      isTaken = true;
    } catch (const std::bad_alloc&) {
      EXPECT_FALSE(retry.isPending()) << failures;
      EXPECT_EQ(host->loop().pendingTimers(), 0U) << failures;
    }
  }
  EXPECT_GT(failures, 2);
  comeOnline();
  EXPECT_EQ(runs, 1);
}

}  // namespace
}  // namespace vantorium
