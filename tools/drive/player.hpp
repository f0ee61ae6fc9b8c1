#pragma once

#include <string>

#include "drive/commands/commands.hpp"
#include "drive/line_reader.hpp"
#include "drive/stage.hpp"

namespace vantorium::drive {

/// What the program ends with.
enum class ExitStatus { played = 0, awaitFailed = 1, refused = 2 };

/// Plays a script, line by line. Main thread only.
class Player {
 public:
  explicit Player(Stage& stage);

  /// Plays until the input ends or a line cannot be played, of which a message tells on standard error.
  ///
  /// Commands come one after the other, each with all that it causes on the main queue. While a
  /// conversation's next line is waited for, the main loop runs; a script in a file is not waited for.
  ExitStatus play(LineReader& reader, bool isConversation);

 private:
  std::optional<LineReader::Line> next(LineReader& reader, bool isConversation);
  ExitStatus play(const LineReader::Line& line);
  void perform(const LineReader::Line& line);

  Stage& stage_;
  Commands commands_;
};

}  // namespace vantorium::drive
