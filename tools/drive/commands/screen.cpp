// What the page, the film, the user and the store do on the screen in front, or in a native ad view.
#include <fmt/format.h>

#include "drive/commands/commands.hpp"
#include "hosts/headless/native_view.hpp"
#include "hosts/headless/view_tree.hpp"
#include "platform/ui/window.hpp"

namespace vantorium::drive {

namespace {

using nlohmann::json;

void page(Stage& stage, const Command& command) {
  static const std::map<std::string, WebViewNavigationType> types{
      {"linkClicked", WebViewNavigationType::linkClicked},
      {"formSubmitted", WebViewNavigationType::formSubmitted},
      {"backForward", WebViewNavigationType::backForward},
      {"reload", WebViewNavigationType::reload},
      {"formResubmitted", WebViewNavigationType::formResubmitted},
      {"other", WebViewNavigationType::other}};
  command.needOneOf({"navigate", "fail"});
  const auto type = command.choiceIfAny("type", types).value_or(WebViewNavigationType::linkClicked);
  const auto url = command.textIfAny("navigate");
  const auto failure = command.textIfAny("fail");
  if (url) check(command, stage.host().navigate(*url, type));
  if (failure) check(command, stage.host().failPage(*failure));
}

std::shared_ptr<headless::ScriptedPlayer> playerOf(Stage& stage, const Command& command) {
  const bool isInView = command.has("view");
  auto player = isInView ? headless::playerIn(*nativeViewOf(stage, command)) : stage.host().frontPlayer();
  if (!player) {
    check(command, isInView ? "The view shows no video. Expected one: populate it with an ad that has one."
                            : headless::Host::noVideo);
  }
  return player;
}

void video(Stage& stage, const Command& command) {
  static const std::map<std::string, bool> events{{"ended", true}, {"failedToEnd", true}, {"failed", true}};
  constexpr double longest = 1e6;  // seconds
  command.needOneOf({"at", "event", "size"});
  const auto size = command.sizeIfAny("size");
  const auto position = command.numberIfAny("at", 0, longest);
  const auto duration = command.numberIfAny("of", 0, longest);
  command.choiceIfAny("event", events);
  const auto event = command.textIfAny("event");
  const auto error = command.textIfAny("error").value_or("The video failed.");
  const auto player = playerOf(stage, command);
  if (size) player->setPresentationSize(*size);
  if (position) player->moveTo(*position, duration.value_or(player->duration()));
  if (event) check(command, player->comeTo(*event, error));
}

void tap(Stage& stage, const Command& command) {
  const auto control = command.text("control");
  if (!command.has("view")) {
    check(command, stage.host().tap(control));
    return;
  }
  const auto view = nativeViewOf(stage, command);
  check(command, headless::tapOutlet(*view, control));
}

void store(Stage& stage, const Command& command) {
  command.choice<bool>("event", {{"finished", true}});
  check(command, stage.host().finishStore());
}

json emptySnapshot() {
  return {{"screen", nullptr},      {"rotation", nullptr}, {"frame", nullptr},
          {"views", json::array()}, {"web", nullptr},      {"player", nullptr}};
}

void snapshot(Stage& stage, const Command& command) {
  json event;
  if (command.has("view")) {
    event = headless::snapshotOfNativeView(*nativeViewOf(stage, command));
    event["view"] = command.text("view");
  } else {
    event = stage.host().snapshot();
    if (event.is_null()) event = emptySnapshot();
  }
  event["event"] = "snapshot";
  stage.answer(command, std::move(event));
}

}  // namespace

void check(const Command& command, const headless::Refusal& refusal) {
  if (refusal) throw Refusal(fmt::format("{}: {}", command.name(), *refusal));
}

void addScreenCommands(Commands& commands) {
  commands["page"] = page;
  commands["video"] = video;
  commands["tap"] = tap;
  commands["store"] = store;
  commands["snapshot"] = snapshot;
}

}  // namespace vantorium::drive
