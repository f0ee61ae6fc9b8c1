#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <vantorium/version.h>

#include "drive/player.hpp"
#include "hosts/headless/home.hpp"
#include "platform/foundation/console.hpp"
#include "platform/foundation/file_descriptor.hpp"

namespace {

using namespace vantorium;
using namespace vantorium::drive;

struct Arguments {
  StageOptions stage;
  std::string baseURL, widgetURL, home, clock = "virtual", script = "-";
  bool isStable = false;
};

/// The folder that everything is kept in; one of its own when none was given, gone with this object.
class Home {
 public:
  explicit Home(const std::string& given) {
    if (given.empty()) {
      std::string name = (std::filesystem::temp_directory_path() / "vantorium-drive-XXXXXX").string();
      if (mkdtemp(name.data()) == nullptr)
        throw Refusal("There is no place for a home. Give one with --home.");
      path_ = temporary_ = name;
      return;
    }
    path_ = given;
    if (const auto refusal = headless::makeHome(path_)) throw Refusal("--home: " + *refusal);
  }
  ~Home() {
    std::error_code ignored;
    if (!temporary_.empty()) std::filesystem::remove_all(temporary_, ignored);
  }
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_, temporary_;
};

/// The script's descriptor; of standard input when it is "-".
FileDescriptor openScript(const std::string& script) {
  FileDescriptor file(script == "-" ? dup(STDIN_FILENO) : open(script.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) {
    throw Refusal(fmt::format("{}: {}. Expected a script that can be read, or - for standard input.", script,
                              std::strerror(errno)));
  }
  if (std::filesystem::is_directory(script))
    throw Refusal(fmt::format("{}: is a folder. Expected a script, or - for standard input.", script));
  return file;
}

ExitStatus play(const Arguments& arguments) {
  const FileDescriptor script = openScript(arguments.script);
  const Home home(arguments.home);
  StageOptions options = arguments.stage;
  options.home = home.path();
  Output output(stdout, arguments.isStable ? std::make_unique<Placeholders>(home.path()) : nullptr);
  Stage stage(options, output);
  ExitStatus status{};
  {
    LineReader reader(script.get(), [&loop = stage.host().loop()] { loop.wake(); });
    status = Player(stage).play(reader, arguments.script == "-");
  }
  if (!stage.end()) {
    printToConsole("vantorium-drive: some of the SDK's work did not end. It was given up.");
    std::_Exit(static_cast<int>(status));
  }
  return status;
}

void addOptions(CLI::App& app, Arguments& arguments) {
  // A script that was to play against a service of its own must not reach the real one by mistake, nor begin
  // in a new home when it was to go on in an old one.
  const auto isGiven = CLI::Validator(
      [](const std::string& given) {
        return std::string(given.empty() ? "is empty; leave it out or give one" : "");
      },
      "");
  app.set_version_flag("--version", "vantorium-drive " VANTORIUM_VERSION);
  app.add_option("--base-url", arguments.baseURL, "Address of the ad service; the real one when left out")
      ->check(isGiven);
  app.add_option("--widget-url", arguments.widgetURL, "Address of the offer wall's host, likewise")
      ->check(isGiven);
  app.add_option("--ca", arguments.stage.service.trustedCertificate,
                 "PEM file of a certificate to trust besides the system's")
      ->check(CLI::ExistingFile);
  app.add_option(
         "--home", arguments.home,
         "Folder for all that is kept: two runs with the same one are two launches of one installation")
      ->check(isGiven);
  app.add_option("--clock", arguments.clock, "virtual: time stands still until \"advance\"; or real")
      ->check(CLI::IsMember({"virtual", "real"}));
  app.add_flag("--stable", arguments.isStable, "Print placeholders for what differs from run to run");
  app.add_option("SCRIPT", arguments.script, "File of JSON lines; - (or nothing) for standard input");
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Plays a script against the SDK on a device that is the script, and prints what happened.",
               "vantorium-drive"};
  Arguments arguments;
  addOptions(app, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : static_cast<int>(ExitStatus::refused);
  }
  if (arguments.clock == "real") arguments.stage.clock = headless::ClockKind::realTime;
  if (!arguments.baseURL.empty()) arguments.stage.service.baseURL = arguments.baseURL;
  if (!arguments.widgetURL.empty()) arguments.stage.service.widgetURL = arguments.widgetURL;
  std::signal(SIGPIPE, SIG_IGN);  // a reader that has gone is noticed by the failing write
  try {
    return static_cast<int>(play(arguments));
  } catch (const std::exception& error) {
    printToConsole(std::string("vantorium-drive: ") + error.what());
    return static_cast<int>(ExitStatus::refused);
  }
}
