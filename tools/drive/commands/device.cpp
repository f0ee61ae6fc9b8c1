// The device and its network, and the application around the SDK.
#include "drive/commands/commands.hpp"

namespace vantorium::drive {

namespace {

using headless::HeadlessApplication;
using nlohmann::json;

const std::map<std::string, ui::DeviceOrientation> deviceOrientations{
    {"portrait", ui::DeviceOrientation::portrait},
    {"portraitUpsideDown", ui::DeviceOrientation::portraitUpsideDown},
    {"landscapeLeft", ui::DeviceOrientation::landscapeLeft},
    {"landscapeRight", ui::DeviceOrientation::landscapeRight},
    {"faceUp", ui::DeviceOrientation::faceUp},
    {"faceDown", ui::DeviceOrientation::faceDown},
    {"unknown", ui::DeviceOrientation::unknown}};

const std::map<std::string, ui::InterfaceOrientation> interfaceOrientations{
    {"portrait", ui::InterfaceOrientation::portrait},
    {"portraitUpsideDown", ui::InterfaceOrientation::portraitUpsideDown},
    {"landscapeLeft", ui::InterfaceOrientation::landscapeLeft},
    {"landscapeRight", ui::InterfaceOrientation::landscapeRight}};

void device(Stage& stage, const Command& command) {
  command.needOneOf({"orientation", "interface", "screen", "set"});
  const auto orientation = command.choiceIfAny("orientation", deviceOrientations);
  const auto interface = command.choiceIfAny("interface", interfaceOrientations);
  const auto screen = command.sizeIfAny("screen");
  const json facts = command.has("set") ? command.object("set") : json::object();
  auto& host = stage.host();
  check(command, host.deviceFacts().set(facts));
  if (screen) host.setScreen(screen->width, screen->height);
  if (interface) host.headlessApplication().setInterfaceOrientation(*interface);
  if (orientation) host.headlessApplication().setDeviceOrientation(*orientation);
}

std::uint32_t flagsOf(const Command& command) {
  namespace bits = reachability_flags;
  static const std::map<std::string, std::uint32_t> names{{"reachable", bits::reachable},
                                                          {"isWWAN", bits::isWWAN},
                                                          {"connectionRequired", bits::connectionRequired},
                                                          {"transientConnection", bits::transientConnection}};
  std::uint32_t flags = 0;
  for (const auto& name : command.texts("flags")) flags |= command.chosen("flags", name, names);
  return flags;
}

bool isNull(const Command& command, const std::string& field) {
  return command.has(field) && command.find(field)->is_null();
}

void reachability(Stage& stage, const Command& command) {
  command.needOneOf({"flags", "radio", "reachableOnWWAN", "simulator", "monitor"});
  auto state = stage.host().reachability().state();
  if (isNull(command, "flags")) {
    state.flags.reset();
  } else if (command.has("flags")) {
    state.flags = flagsOf(command);
  }
  if (isNull(command, "radio")) {
    state.radio.reset();
  } else if (const auto radio = command.textIfAny("radio")) {
    state.radio = *radio;
  }
  if (const auto allowed = command.flagIfAny("reachableOnWWAN")) state.reachableOnWWAN = *allowed;
  if (const auto simulator = command.flagIfAny("simulator")) state.isRunningOnDevice = !*simulator;
  if (const auto monitor = command.flagIfAny("monitor")) {
    if (stage.wasUsed) command.refuse("monitor", "it before the first call of an entry point");
    stage.host().setHasReachabilityMonitor(*monitor);
  }
  stage.host().reachability().setState(std::move(state));
}

void app(Stage& stage, const Command& command) {
  using Act = void (HeadlessApplication::*)();
  const auto act =
      command.choice<Act>("event", {{"didEnterBackground", &HeadlessApplication::enterBackground},
                                    {"willEnterForeground", &HeadlessApplication::enterForeground}});
  (stage.host().headlessApplication().*act)();
}

void host(Stage& stage, const Command& command) {
  using TopMost = HeadlessApplication::TopMost;
  command.needOneOf({"topMost", "transition"});
  const auto topMost = command.choiceIfAny<TopMost>(
      "topMost",
      {{"none", TopMost::none}, {"idle", TopMost::idle}, {"transitioning", TopMost::transitioning}});
  const auto completes = command.choiceIfAny<bool>("transition", {{"complete", true}});
  if (topMost) stage.host().headlessApplication().setTopMost(*topMost);
  if (completes) stage.host().headlessApplication().completeTransition();
}

}  // namespace

void addDeviceCommands(Commands& commands) {
  commands["device"] = device;
  commands["reachability"] = reachability;
  commands["app"] = app;
  commands["host"] = host;
}

}  // namespace vantorium::drive
