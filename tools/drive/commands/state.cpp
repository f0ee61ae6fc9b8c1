// Properties of the facade, what the SDK wrote back into options, and the delegate.
#include "drive/commands/commands.hpp"
#include "drive/records.hpp"

namespace vantorium::drive {

namespace {

using Flag = bool SdkContext::Flags::*;

const std::map<std::string, Flag>& properties() {
  using Flags = SdkContext::Flags;
  static const std::map<std::string, Flag> all{{"isConfigured", &Flags::isConfigured},
                                               {"isConfiguring", &Flags::isConfiguring},
                                               {"isShowingAds", &Flags::isShowingAds},
                                               {"autoCaching", &Flags::autoCaching}};
  return all;
}

void set(Stage& stage, const Command& command) {
  std::vector<std::string> names;
  names.reserve(properties().size());
  for (const auto& [name, flag] : properties()) names.push_back(name);
  command.needOneOf(names);
  std::vector<std::pair<Flag, bool>> changes;
  for (const auto& [name, flag] : properties()) {
    if (const auto value = command.flagIfAny(name)) changes.emplace_back(flag, *value);
  }
  stage.sdk().context()->updateFlags([&](SdkContext::Flags& flags) {
    for (const auto& [flag, value] : changes) flags.*flag = value;
  });
}

void get(Stage& stage, const Command& command) {
  command.needOneOf({"property", "options"});
  if (const auto name = command.textIfAny("options")) {
    const auto found = stage.namedOptions.find(*name);
    if (found == stage.namedOptions.end()) command.refuse("options", "the \"name\" of options given before");
    stage.answer(command, {{"event", "property"}, {"options", *name}, {"value", toJSON(*found->second)}});
    return;
  }
  const Flag flag = command.choice("property", properties());
  const bool value = stage.sdk().context()->flags().*flag;
  stage.answer(command, {{"event", "property"}, {"property", command.text("property")}, {"value", value}});
}

void delegate(Stage& stage, const Command& command) {
  const auto* const value = command.find("methods");
  if (value != nullptr && value->is_null()) {
    stage.setDelegate(nullptr);
    return;
  }
  std::set<DelegateMethod> methods;
  for (const auto& selector : command.texts("methods"))
    methods.insert(command.chosen("methods", selector, ScriptDelegate::methods()));
  auto next = stage.delegate();
  if (!next) next = std::make_shared<ScriptDelegate>([&stage](auto event) { stage.tell(std::move(event)); });
  next->answer(methods);
  stage.setDelegate(std::move(next));
}

}  // namespace

void addStateCommands(Commands& commands) {
  commands["set"] = set;
  commands["get"] = get;
  commands["delegate"] = delegate;
}

}  // namespace vantorium::drive
