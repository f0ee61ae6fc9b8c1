#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/error.hpp>
#include <vantorium/export.h>

namespace vantorium {

class Host;
class VantoriumNativeAdView;

/// The host without a screen, for tests of an application's ad flow: the test is the user, the page, the
/// film, the store and the device. The network is real.
///
///     const auto host = vantorium::headless::makeHost({.home = folder});
///     Vantorium::setHost(host);
///     Vantorium::configure("app", [&](bool success, const auto&) { isReady = success; });
///     vantorium::headless::runUntil(*host, [&] { return isReady; });
///
/// Everything here is for the thread that made the host, which is the main thread. Functions that ask for
/// something that cannot be done change nothing and return why.
namespace headless {

/// Where a host keeps things, and how its time goes.
struct HostOptions {
  /// Folder of settings and caches, made unless it is there. Two hosts with the same home, one after the
  /// other, are two launches of one installation.
  std::filesystem::path home;
  /// Time stands still until `advance`; waiting for the network does not move it. Otherwise it is real.
  bool virtualTime = true;
};

/// Makes the host. Keep it for the life of the process. Null, with a word on standard error, when the home
/// is empty or no folder that can be written to.
VANTORIUM_API std::shared_ptr<vantorium::Host> makeHost(HostOptions options);

/// Runs the main queue until `done` answers true, asked after each piece of work; false when `timeout`
/// seconds of real time have passed first, or when this is no headless host.
VANTORIUM_API bool runUntil(vantorium::Host& host, const std::function<bool()>& done, double timeout = 30);
/// Moves virtual time on by so many seconds, running each timer on the way, in order, with all that it causes
/// on the main queue.
VANTORIUM_API std::optional<Error> advance(vantorium::Host& host, double seconds);
/// Whether the device is online; it is at first.
VANTORIUM_API std::optional<Error> setOnline(vantorium::Host& host, bool isOnline);
/// Sets facts of the device, an object of JSON such as {"volume":0.5,"idfa":null}; null takes one away. The
/// names are those of the "set" of scripted runs. All are set, or none.
VANTORIUM_API std::optional<Error> setDevice(vantorium::Host& host, const std::string& facts);

/// The page in front follows a link to `url`, such as "closead://".
VANTORIUM_API std::optional<Error> navigate(vantorium::Host& host, const std::string& url);
/// The page in front fails to load.
VANTORIUM_API std::optional<Error> failPage(vantorium::Host& host, const std::string& text);
/// The video in front is at `position` of `duration` seconds.
VANTORIUM_API std::optional<Error> moveVideo(vantorium::Host& host, double position, double duration);
/// How a video comes to its end.
enum class VideoEnd {
  ended,        ///< it was played to its end
  failedToEnd,  ///< it broke off
  failed        ///< it could not be played at all
};
/// The video in front ends; `text` says why, if it failed.
VANTORIUM_API std::optional<Error> endVideo(vantorium::Host& host, VideoEnd how,
                                            const std::string& text = {});
/// The user taps the control of the screen in front that has this name in its snapshot, such as
/// "closeWebViewButton", or goes "back".
VANTORIUM_API std::optional<Error> tap(vantorium::Host& host, const std::string& control);
/// The user closes the store's sheet.
VANTORIUM_API std::optional<Error> finishStore(vantorium::Host& host);

/// The screen in front as JSON, as scripted runs tell it: {"screen":"CampaignVC","views":[…],…}; "null" when
/// no ad is shown.
VANTORIUM_API std::string snapshot(vantorium::Host& host);
/// What happened since the last call, oldest first, each an object of JSON as scripted runs tell it:
/// {"event":"presented",…}, "load", "player", "openURL", "console" and so on.
VANTORIUM_API std::vector<std::string> takeEvents(vantorium::Host& host);

/// A place for a native ad, of the given size in points, with all outlets; the medium fills it. It is not
/// seen until `setSeen`. Null when this is no headless host, or a side is not from 0 to 100,000. The host
/// outlives it.
VANTORIUM_API std::shared_ptr<VantoriumNativeAdView> makeNativeAdView(vantorium::Host& host, double width,
                                                                      double height);
/// Puts the view into the application's window, or takes it out.
VANTORIUM_API std::optional<Error> setSeen(vantorium::Host& host,
                                           const std::shared_ptr<VantoriumNativeAdView>& view, bool isSeen);
/// The user taps an outlet, such as "callToActionButton"; "mediaView" stands for its sound's button.
VANTORIUM_API std::optional<Error> tap(VantoriumNativeAdView& view, const std::string& outlet);
/// The view's video is at `position` of `duration` seconds.
VANTORIUM_API std::optional<Error> moveVideo(VantoriumNativeAdView& view, double position, double duration);
/// The view's video ends.
VANTORIUM_API std::optional<Error> endVideo(VantoriumNativeAdView& view, VideoEnd how,
                                            const std::string& text = {});
/// The view as JSON, as that of a screen.
VANTORIUM_API std::string snapshot(VantoriumNativeAdView& view);

}  // namespace headless
}  // namespace vantorium
