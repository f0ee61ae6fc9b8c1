// The facade's entry points, under their own names.
#include "drive/commands/commands.hpp"
#include "drive/entry_call.hpp"
#include "drive/records.hpp"

namespace vantorium::drive {

namespace {

void configure(Stage& stage, const Command& command) {
  const EntryCall call(stage, command);
  const auto appID = command.text("appID");
  const auto parameters = readParameters(command);
  call.make([&] { stage.sdk().configure(appID, parameters, call.queue(), call.completion()); });
}

void precacheCampaigns(Stage& stage, const Command& command) {
  const EntryCall call(stage, command);
  const auto placement = command.text("placement");
  call.make([&] { stage.sdk().precacheCampaigns(placement, call.queue(), call.completion()); });
}

void isCampaignReady(Stage& stage, const Command& command) {
  const EntryCall call(stage, command);
  const auto placement = command.text("placement");
  call.make([&] { call.result(stage.sdk().isCampaignReady(placement)); });
}

void canView(Stage& stage, const Command& command) {
  const EntryCall call(stage, command);
  const auto placement = command.text("placement");
  call.make([&] { stage.sdk().canView(placement, call.queue(), call.completion()); });
}

void precacheTemplate(Stage& stage, const Command& command) {
  const EntryCall call(stage, command);
  call.make([&] { stage.sdk().precacheRewardablePopupTemplate(call.queue(), call.completion()); });
}

/// The three entry points that show an ad differ in nothing but their name.
using Show = void (Sdk::*)(const std::string& forPlacement, std::optional<VantoriumServerParameter>,
                           Sdk::Completion completion);

Handler showing(Show show) {
  return [show](Stage& stage, const Command& command) {
    const EntryCall call(stage, command);
    const auto placement = command.text("placement");
    const auto parameter = readServerParameter(command);
    call.make([&] { (stage.sdk().*show)(placement, parameter, call.completion()); });
  };
}

void getLog(Stage& stage, const Command& command) {
  const EntryCall call(stage, command);
  call.make([&] { call.result(stage.sdk().context()->log()); });
}

}  // namespace

void addEntryPoints(Commands& commands) {
  commands["configure"] = configure;
  commands["precacheCampaigns"] = precacheCampaigns;
  commands["isCampaignReady"] = isCampaignReady;
  commands["canView"] = canView;
  commands["precacheRewardablePopupTemplate"] = precacheTemplate;
  commands["showCampaign"] = showing(&Sdk::showCampaign);
  commands["showOfferWall"] = showing(&Sdk::showOfferWall);
  commands["showRewardablePopup"] = showing(&Sdk::showRewardablePopup);
  commands["getLog"] = getLog;
}

}  // namespace vantorium::drive
