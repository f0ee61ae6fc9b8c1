#include <gtest/gtest.h>

#include "soak/scenario.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium::soak {
namespace {

// A few seconds of what scripts/soak does for an hour; `vantorium-soak 300 --seed 1` is the same by hand.
TEST(Soak, LosesAndDoublesNothingThroughBadDays) {
  const testing::TemporaryDirectory home;
  Options options;
  options.rounds = 300;
  options.samples = 10;
  options.home = home.path();
  Scenario scenario(options);
  while (scenario.round() < options.rounds) {
    scenario.playRound();
    if (scenario.round() % (options.rounds / options.samples) == 0) scenario.rest();
  }
  scenario.end();
  for (const auto& [kind, times] : scenario.violations()) ADD_FAILURE() << kind << ", " << times << " times";
  EXPECT_GT(scenario.shown("rewarded"), 0U);
  EXPECT_GT(scenario.samples().back().rewards, 0U);
}

}  // namespace
}  // namespace vantorium::soak
