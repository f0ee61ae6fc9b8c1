// Native ads: fetching and reporting them, and the views that an application would lay out for them.
#include <fmt/format.h>

#include <limits>

#include "drive/commands/commands.hpp"
#include "drive/entry_call.hpp"
#include "drive/records.hpp"
#include "hosts/headless/native_view.hpp"

namespace vantorium::drive {

namespace {

using nlohmann::json;
using Ads = std::vector<std::shared_ptr<VantoriumNativeAd>>;

constexpr ui::Rect defaultFrame{0, 0, 390, 600};

/// Options as they stand in the command, remembered when they have a name; or the name of remembered ones.
std::shared_ptr<VantoriumAdOptions> options(Stage& stage, const Command& command, const json& value) {
  if (value.is_string()) {
    const auto known = stage.namedOptions.find(value.get<std::string>());
    if (known == stage.namedOptions.end())
      command.refuse("options", "an object, or a name given to one before");
    return known->second;
  }
  auto read = readOptions(value);
  if (!value.contains("name")) return read;
  if (!value["name"].is_string()) command.refuse("options", "options whose \"name\" is a text");
  stage.namedOptions[value["name"].get<std::string>()] = read;
  return read;
}

std::shared_ptr<VantoriumNativeAdOptions> nativeOptions(Stage& stage, const Command& command) {
  const json* const value = command.find("options");
  if (value == nullptr || value->is_null()) return nullptr;
  auto native = std::dynamic_pointer_cast<VantoriumNativeAdOptions>(options(stage, command, *value));
  if (!native) command.refuse("options", "options of native ads, such as {\"numberOfAdsToPrecache\":3}");
  return native;
}

void precacheNativeAds(Stage& stage, const Command& command) {
  const EntryCall call(stage, command);
  const auto placement = command.text("placement");
  const auto wanted = nativeOptions(stage, command);
  call.make([&] {
    stage.sdk().precacheNativeAds(placement, wanted, call.queue(),
                                  [call, &stage](Ads ads, const std::optional<Error>& error) {
                                    json records = json::array();
                                    for (const auto& ad : ads) records.push_back(toJSON(*ad));
                                    stage.ads = std::move(ads);
                                    call.complete(!error, error, {{"ads", std::move(records)}});
                                  });
  });
}

std::size_t indexOf(const Command& command) {
  const double most = std::numeric_limits<int>::max();
  const double number = command.numberIfAny("ad", 0, most).value_or(0);
  const auto index = static_cast<std::size_t>(number);
  if (static_cast<double>(index) != number) command.refuse("ad", "a whole number, counted from 0");
  return index;
}

/// The ad that the command counts; null when there is none, which the SDK has an answer to.
std::shared_ptr<VantoriumNativeAd> adOf(Stage& stage, const Command& command) {
  const json* const value = command.find("ad");
  if (value != nullptr && value->is_null()) return nullptr;
  const std::size_t index = indexOf(command);
  return index < stage.ads.size() ? stage.ads[index] : nullptr;
}

Sdk::AdOptions listOfOptions(Stage& stage, const Command& command) {
  const json* const value = command.find("options");
  if (value == nullptr || value->is_null()) return {};
  if (!value->is_array()) command.refuse("options", "a list of options");
  Sdk::AdOptions all;
  for (const auto& each : *value) all.push_back(options(stage, command, each));
  return all;
}

void populateNativeAdView(Stage& stage, const Command& command) {
  const EntryCall call(stage, command);
  const json* const name = command.find("view");
  const auto view = name != nullptr && name->is_null() ? nullptr : nativeViewOf(stage, command);
  const auto ad = adOf(stage, command);
  const auto all = listOfOptions(stage, command);
  call.make([&] { stage.sdk().populateNativeAdView(view, ad, all, call.completion()); });
}

/// The impression named, or that of an ad of the latest precaching, whose identifier no script can know.
std::string impressionOf(Stage& stage, const Command& command) {
  if (const auto named = command.textIfAny("impressionID")) return *named;
  if (!command.has("ad")) command.refuse("impressionID", "a text, or \"ad\" to count an ad by");
  const auto ad = adOf(stage, command);
  if (!ad) {
    command.refuse("ad", fmt::format("one of the {} ads of the latest precacheNativeAds, counted from 0",
                                     stage.ads.size()));
  }
  return ad->impressionID;
}

using Report = void (Sdk::*)(const std::string& impressionID);

Handler reporting(Report report) {
  return [report](Stage& stage, const Command& command) {
    const EntryCall call(stage, command);
    const auto impression = impressionOf(stage, command);
    call.make([&] { (stage.sdk().*report)(impression); });
    call.result(nullptr);
  };
}

void reportClick(Stage& stage, const Command& command) {
  const EntryCall call(stage, command);
  const auto impression = impressionOf(stage, command);
  const auto parameter = readServerParameter(command);
  call.make([&] { stage.sdk().reportNativeAdClick(impression, parameter); });
  call.result(nullptr);
}

void createView(Stage& stage, const Command& command) {
  const auto name = command.text("create");
  const auto& known = VantoriumNativeAdView::outletNames();
  const auto outlets = command.has("outlets") ? command.texts("outlets") : known;
  for (const auto& outlet : outlets) {
    if (std::find(known.begin(), known.end(), outlet) == known.end())
      command.refuse("outlets", "a list of some of " + listed(known));
  }
  const auto frame = command.rectIfAny("frame").value_or(defaultFrame);
  auto view = std::make_shared<VantoriumNativeAdView>(stage.host(), frame);
  for (const auto& outlet : outlets) view->makeOutlet(outlet);
  auto& place = stage.nativeViews[name];
  if (place) place->removeFromSuperview();
  place = std::move(view);
}

void nativeView(Stage& stage, const Command& command) {
  const bool isNew = command.has("create");
  if (!isNew) command.needOneOf({"inWindow", "frame", "hidden"});
  const auto frame = command.rectIfAny("frame");
  const auto hidden = command.flagIfAny("hidden");
  const auto inWindow = command.flagIfAny("inWindow");
  if (isNew) createView(stage, command);
  const auto view = isNew ? stage.nativeViews[command.text("create")] : nativeViewOf(stage, command);
  if (frame) view->setFrame(*frame);
  headless::layOut(*view);
  if (hidden) view->setHidden(*hidden);
  if (!inWindow) return;
  if (*inWindow) {
    stage.host().headlessApplication().rootView().addSubview(view);
  } else {
    view->removeFromSuperview();
  }
}

}  // namespace

std::shared_ptr<VantoriumNativeAdView> nativeViewOf(Stage& stage, const Command& command) {
  const auto found = stage.nativeViews.find(command.text("view"));
  if (found == stage.nativeViews.end()) {
    command.refuse("view", R"(the name of a view made before with {"do":"nativeView","create":"name"})");
  }
  return found->second;
}

void addNativeAdCommands(Commands& commands) {
  commands["precacheNativeAds"] = precacheNativeAds;
  commands["populateNativeAdView"] = populateNativeAdView;
  commands["reportNativeAdImpression"] = reporting(&Sdk::reportNativeAdImpression);
  commands["reportNativeAdClick"] = reportClick;
  commands["reportNativeAdVideoStarted"] = reporting(&Sdk::reportNativeAdVideoStarted);
  commands["reportNativeAdVideoEnded"] = reporting(&Sdk::reportNativeAdVideoEnded);
  commands["nativeView"] = nativeView;
}

}  // namespace vantorium::drive
