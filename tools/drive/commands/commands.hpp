#pragma once

#include <functional>
#include <map>
#include <string>

#include "drive/command.hpp"
#include "drive/stage.hpp"

namespace vantorium::drive {

/// Plays one command; throws `Refusal` before anything has happened when it cannot be played.
using Handler = std::function<void(Stage& stage, const Command& command)>;
/// By the word after "do".
using Commands = std::map<std::string, Handler>;

/// Each adds one family of commands.
void addEntryPoints(Commands& commands);       ///< the facade's, but for native ads
void addNativeAdCommands(Commands& commands);  ///< native ads and the views that show them
void addStateCommands(Commands& commands);     ///< properties, options and the delegate
void addTimeCommands(Commands& commands);      ///< waiting and clocks
void addScreenCommands(Commands& commands);    ///< what page, film, user and store do
void addDeviceCommands(Commands& commands);    ///< device, network, and the application around the SDK

/// The native ad view that the command names in "view".
std::shared_ptr<VantoriumNativeAdView> nativeViewOf(Stage& stage, const Command& command);
/// Throws the refusal, if it is one.
void check(const Command& command, const headless::Refusal& refusal);

}  // namespace vantorium::drive
