#include "drive/drive_process.hpp"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <sstream>

extern char** environ;

namespace vantorium::testing {

using nlohmann::json;

namespace {

constexpr int patience = 60'000;  // milliseconds

bool has(const json& line, const json& fields) {
  for (const auto& [name, value] : fields.items()) {
    if (!line.contains(name) || line[name] != value) return false;
  }
  return true;
}

std::string contents(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

}  // namespace

DriveProcess::DriveProcess(std::vector<std::string> arguments, std::vector<std::string> wrapper) {
  std::signal(SIGPIPE, SIG_IGN);
  std::array<int, 2> in{}, out{};
  EXPECT_EQ(pipe2(in.data(), O_CLOEXEC) + pipe2(out.data(), O_CLOEXEC), 0);
  const FileDescriptor childInput(in[0]), childOutput(out[1]);
  input_ = FileDescriptor(in[1]);
  output_ = FileDescriptor(out[0]);
  wrapper.push_back(VANTORIUM_DRIVE);
  arguments.insert(arguments.begin(), wrapper.begin(), wrapper.end());
  std::vector<char*> argv;
  for (auto& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, childInput.get(), 0);
  posix_spawn_file_actions_adddup2(&actions, childOutput.get(), 1);
  const std::string errors = folder_.path() / "errors";
  posix_spawn_file_actions_addopen(&actions, 2, errors.c_str(), O_CREAT | O_WRONLY, 0600);
  EXPECT_EQ(posix_spawnp(&process_, argv[0], &actions, nullptr, argv.data(), environ), 0);
  posix_spawn_file_actions_destroy(&actions);
}

DriveProcess::~DriveProcess() {
  if (process_ > 0) finish();
}

void DriveProcess::kill() {
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
  process_ = -1;
}

bool DriveProcess::send(const std::string& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t count = ::write(input_.get(), bytes.data() + sent, bytes.size() - sent);
    if (count <= 0) return false;
    sent += static_cast<std::size_t>(count);
  }
  return true;
}

std::optional<std::string> DriveProcess::readLine() {
  while (true) {
    const std::size_t end = unread_.find('\n');
    if (end != std::string::npos) {
      std::string line = unread_.substr(0, end);
      unread_.erase(0, end + 1);
      return line;
    }
    std::array<char, 65536> buffer{};
    pollfd ready{output_.get(), POLLIN, 0};
    if (::poll(&ready, 1, patience) <= 0) return std::nullopt;
    const ssize_t count = ::read(output_.get(), buffer.data(), buffer.size());
    if (count <= 0) return std::nullopt;
    unread_.append(buffer.data(), static_cast<std::size_t>(count));
    read_.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

json DriveProcess::hear(const json& fields) {
  while (const auto line = readLine()) {
    auto event = json::parse(*line);
    if (has(event, fields)) return event;
  }
  return nullptr;
}

int DriveProcess::finish() {
  endInput();
  if (output_.isOpen()) {
    while (readLine()) {
    }
  }
  int status = 0;
  // Its output has ended, or nobody waits for that: only the end of the process is left.
  if (output_.isOpen()) {
    pollfd ended{output_.get(), POLLIN, 0};
    if (::poll(&ended, 1, 0) == 0) ::kill(process_, SIGKILL);
  }
  ::waitpid(process_, &status, 0);
  process_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string DriveProcess::complaints() const { return contents(folder_.path() / "errors"); }

std::size_t Played::count(const json& fields) const {
  std::size_t found = 0;
  for (const auto& line : lines) found += has(line, fields);
  return found;
}

json Played::first(const json& fields) const {
  for (const auto& line : lines) {
    if (has(line, fields)) return line;
  }
  return nullptr;
}

Played playScript(const std::string& script, std::vector<std::string> arguments) {
  const TemporaryDirectory folder;
  const std::string path = folder.path() / "script.jsonl";
  std::ofstream(path, std::ios::binary) << script;
  arguments.push_back(path);
  DriveProcess process(std::move(arguments));
  Played played;
  played.status = process.finish();
  played.output = process.output();
  played.complaints = process.complaints();
  std::istringstream stream(played.output);
  for (std::string line; std::getline(stream, line);) played.lines.push_back(json::parse(line));
  return played;
}

}  // namespace vantorium::testing
