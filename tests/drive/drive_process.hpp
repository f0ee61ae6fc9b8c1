#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/file_descriptor.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium::testing {

/// A running `vantorium-drive`, and both ends of a conversation with it.
class DriveProcess {
 public:
  /// `wrapper` is a command that is given the drive and its arguments to run, if there is one.
  explicit DriveProcess(std::vector<std::string> arguments, std::vector<std::string> wrapper = {});
  /// Ends it, should it still run.
  ~DriveProcess();
  DriveProcess(const DriveProcess&) = delete;
  DriveProcess& operator=(const DriveProcess&) = delete;

  /// Writes the bytes; whether all of them were taken.
  bool send(const std::string& bytes);
  bool say(const nlohmann::json& command) { return send(command.dump() + "\n"); }
  /// The next line of output; none at its end, or when it does not come.
  std::optional<std::string> readLine();
  /// Reads on to a line that has the fields; null when none comes.
  nlohmann::json hear(const nlohmann::json& fields);
  void endInput() { input_ = {}; }
  /// Nobody reads its output any more.
  void closeOutput() { output_ = {}; }
  /// Ends it wherever it is.
  void kill();
  /// Ends its input, reads the rest of its output and waits for the end: its status, or -1 when it had to be
  /// ended.
  int finish();

  /// All output read so far.
  const std::string& output() const { return read_; }
  /// What it wrote to standard error, once it has ended.
  std::string complaints() const;

 private:
  TemporaryDirectory folder_;
  FileDescriptor input_, output_;
  std::string read_, unread_;
  int process_ = -1;
};

struct Played {
  int status = -1;
  std::string output, complaints;
  std::vector<nlohmann::json> lines;

  /// How many lines have all of the fields.
  std::size_t count(const nlohmann::json& fields) const;
  /// The first of them; null when there is none.
  nlohmann::json first(const nlohmann::json& fields) const;
};

/// Plays the script, given as the bytes of its file, to its end.
Played playScript(const std::string& script, std::vector<std::string> arguments = {});

}  // namespace vantorium::testing
