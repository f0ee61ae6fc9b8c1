// Waiting for events, and moving the clocks.
#include <fmt/format.h>

#include "drive/commands/commands.hpp"
#include "drive/dates.hpp"

namespace vantorium::drive {

namespace {

constexpr std::size_t longestLine = 500;         // bytes, in a complaint
constexpr double defaultTimeout = 10;            // seconds
constexpr double longestTimeout = 86'400;        // seconds
constexpr double longestAdvance = 366 * 86'400;  // seconds

void awaitEvent(Stage& stage, const Command& command) {
  const auto& fields = command.object("event");
  const double timeout = command.numberIfAny("timeout", 0, longestTimeout).value_or(defaultTimeout);
  std::size_t next = 0;
  const bool came =
      stage.host().loop().runUntil([&] { return stage.output().claim(fields, next); }, Seconds{timeout});
  if (came) return;
  const auto nearest = stage.output().nearest(fields);
  throw AwaitFailure(fmt::format(
      "await: no line with {} came in {:g} s. Expected one that answered no await before; {} lines were "
      "printed{}",
      brief(fields, longestLine), timeout, next,
      nearest.is_null() ? "." : ", the nearest one was " + brief(nearest, longestLine)));
}

void advance(Stage& stage, const Command& command) {
  const double seconds = command.number("seconds", 0, longestAdvance);
  if (!stage.isTimeVirtual()) {
    stage.host().loop().runUntil([] { return false; }, Seconds{seconds});
  } else if (stage.host().clock().now() + Seconds{seconds} >= *parseDate("2199-01-01")) {
    command.refuse("seconds", "a time that ends before the year 2199");
  } else {
    stage.host().advance(seconds);
  }
  stage.answer(command, {{"event", "advanced"}, {"now", formatDate(stage.host().clock().now())}});
}

void clock(Stage& stage, const Command& command) {
  const Date now = command.date("now");
  if (!stage.isTimeVirtual())
    throw Refusal("clock: the real clock cannot be set. Expected a run with --clock virtual.");
  stage.host().loop().setNow(now);
}

}  // namespace

void addTimeCommands(Commands& commands) {
  commands["await"] = awaitEvent;
  commands["advance"] = advance;
  commands["clock"] = clock;
}

}  // namespace vantorium::drive
