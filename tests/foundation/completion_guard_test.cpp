#include "platform/foundation/completion_guard.hpp"

#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <vantorium/error.hpp>

#include "platform/foundation/worker_pool.hpp"
#include "support/failing_allocations.hpp"

namespace vantorium {
namespace {

using Completion = std::function<void(bool, std::optional<Error>)>;

struct CompletionGuardTest : ::testing::Test {
  std::string heard;
  Completion noting = [this](bool success, const std::optional<Error>& error) {
    heard +=
        success ? "success;" : error.value_or(VantoriumError::internalError("none")).errorMessage() + ";";
  };
  const Error dropped = Error::platform("test", 1, "dropped");
};

TEST_F(CompletionGuardTest, TheFirstCallCountsAndTheFallbackIsForNone) {
  const auto held = std::make_shared<int>();
  {
    const CompletionGuard guard(
        Completion([this, held](bool success, auto error) { noting(success, error); }), false, dropped);
    const Completion copy = guard;  // as everybody hands completions on
    copy(true, std::nullopt);
    EXPECT_EQ(held.use_count(), 1) << "what the completion holds goes with the call";
    guard(false, dropped);
  }
  EXPECT_EQ(heard, "success;");
  { const CompletionGuard never(noting, false, dropped); }
  EXPECT_EQ(heard, "success;dropped;");
  { const CompletionGuard null(Completion(), false, dropped); }
}

TEST_F(CompletionGuardTest, WorkThatIsDroppedByAnExceptionCompletes) {
  std::promise<std::optional<Error>> outcome;
  workers::async([guard = CompletionGuard(Completion([&](bool, std::optional<Error> error) {
                                            outcome.set_value(std::move(error));
                                          }),
                                          false, dropped)] {
    std::vector<int>().at(1) = 0;
    guard(true, std::nullopt);
  });
  EXPECT_EQ(outcome.get_future().get(), dropped);
}

TEST_F(CompletionGuardTest, WhatACompletionThrowsReachesItsCallerAlone) {
  const Completion throwing = [this](bool success, const std::optional<Error>& error) {
    noting(success, error);
    throw std::runtime_error("the application's");
  };
  {
    const CompletionGuard guard(throwing, false, dropped);
    EXPECT_THROW(guard(true, std::nullopt), std::runtime_error);
  }
  { const CompletionGuard unused(throwing, false, dropped); }
  EXPECT_EQ(heard, "success;dropped;");
}

TEST_F(CompletionGuardTest, WithoutMemoryTheFallbackIsAllThereIs) {
  if (!testing::FailingAllocations::isSupported) GTEST_SKIP() << "the sanitizer allocates";
  int calls = 0;
  std::function<void(int)> counting = [&](int by) { calls += by; };
  {
    const testing::FailingAllocations none(0);
    const CompletionGuard guard(std::move(counting), 7);
    EXPECT_EQ(calls, 7);
    guard(1);
  }
  EXPECT_EQ(calls, 7);
}

}  // namespace
}  // namespace vantorium
