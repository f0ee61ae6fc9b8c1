#include "drive/player.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "platform/foundation/console.hpp"

namespace vantorium::drive {

namespace {

constexpr Seconds ever{1e9};

bool isBlank(const std::string& text) { return text.find_first_not_of(" \t\r") == std::string::npos; }

void complain(std::size_t line, const char* problem) {
  printToConsole(fmt::format("vantorium-drive: line {}: {}", line, problem));
}

}  // namespace

Player::Player(Stage& stage) : stage_(stage) {
  addEntryPoints(commands_);
  addNativeAdCommands(commands_);
  addStateCommands(commands_);
  addTimeCommands(commands_);
  addScreenCommands(commands_);
  addDeviceCommands(commands_);
}

ExitStatus Player::play(LineReader& reader, bool isConversation) {
  while (const auto line = next(reader, isConversation)) {
    const ExitStatus status = play(*line);
    if (status != ExitStatus::played) return status;
    if (stage_.output().hasFailed()) break;
  }
  if (!stage_.output().hasFailed()) return ExitStatus::played;
  printToConsole("vantorium-drive: standard output cannot be written. Keep reading it to the end.");
  return ExitStatus::refused;
}

std::optional<LineReader::Line> Player::next(LineReader& reader, bool isConversation) {
  if (isConversation) {
    const auto isWanted = [&] { return reader.isReady() || stage_.output().hasFailed(); };
    stage_.host().loop().runUntil(isWanted, ever);
    if (stage_.output().hasFailed()) return std::nullopt;
  }
  return reader.take();
}

ExitStatus Player::play(const LineReader::Line& line) {
  try {
    perform(line);
    return ExitStatus::played;
  } catch (const AwaitFailure& failure) {
    complain(line.number, failure.what());
    return ExitStatus::awaitFailed;
  } catch (const std::exception& refusal) {
    complain(line.number, refusal.what());
    return ExitStatus::refused;
  }
}

void Player::perform(const LineReader::Line& line) {
  if (line.isTooLong) {
    throw Refusal(fmt::format("The line is too long. Expected at most {} bytes before its end.",
                              LineReader::longestLine));
  }
  if (isBlank(line.text)) return;
  const Command command = Command::parse(line.text);
  const auto found = commands_.find(command.name());
  if (found == commands_.end()) {
    throw Refusal(fmt::format("There is no command {}. Expected one of {}.", brief(command.name()),
                              listed(wordsOf(commands_))));
  }
  found->second(stage_, command);
  stage_.settle();
}

}  // namespace vantorium::drive
