// What applications see of the headless host.
#include <algorithm>

#include <vantorium/headless.hpp>

#include "hosts/headless/headless_host.hpp"
#include "hosts/headless/home.hpp"
#include "hosts/headless/native_view.hpp"
#include "platform/foundation/console.hpp"

namespace vantorium::headless {

namespace {

using nlohmann::json;

/// The host as what it is; null when it is of another kind.
Host* headlessHost(vantorium::Host& host) { return dynamic_cast<Host*>(&host); }

std::optional<Error> errorOf(const Refusal& refusal) {
  if (!refusal) return std::nullopt;
  return VantoriumError::internalError(*refusal);
}

/// Has the script act on the host; tells why that was not possible.
template <typename Act>
std::optional<Error> on(vantorium::Host& host, Act act) {
  auto* const scripted = headlessHost(host);
  if (scripted == nullptr)
    return VantoriumError::internalError("This is no host of vantorium::headless::makeHost.");
  return errorOf(act(*scripted));
}

std::string textOf(const json& value) { return value.dump(-1, ' ', false, json::error_handler_t::replace); }

const char* nameOf(VideoEnd end) {
  switch (end) {
    case VideoEnd::ended:
      return "ended";
    case VideoEnd::failedToEnd:
      return "failedToEnd";
    case VideoEnd::failed:
      return "failed";
  }
  return "";
}

constexpr double longest = 1e9;          // seconds; more would not fit the clocks in the long run
constexpr double longestSide = 100'000;  // points
constexpr const char* noVideo = "The view has no video. Populate it with an ad that has one.";

}  // namespace

std::shared_ptr<vantorium::Host> makeHost(HostOptions options) {
  if (const auto refusal = makeHome(options.home)) {
    printToConsole("vantorium: " + *refusal);
    return nullptr;
  }
  const auto clock = options.virtualTime ? ClockKind::virtualTime : ClockKind::realTime;
  return std::make_shared<Host>(Host::Options{.home = std::move(options.home), .clock = clock});
}

bool runUntil(vantorium::Host& host, const std::function<bool()>& done, double timeout) {
  auto* const scripted = headlessHost(host);
  return scripted != nullptr &&
         scripted->loop().runUntil(done, Seconds{timeout > 0 ? std::min(timeout, longest) : 0});
}

std::optional<Error> advance(vantorium::Host& host, double seconds) {
  return on(host, [&](Host& scripted) -> Refusal {
    if (!(seconds >= 0 && seconds <= longest))
      return "Time goes on by 0 to 1,000,000,000 seconds. Give seconds in between.";
    if (!scripted.hasVirtualTime()) return "Time is real here. Make the host with virtualTime.";
    scripted.advance(seconds);
    return std::nullopt;
  });
}

std::optional<Error> setOnline(vantorium::Host& host, bool isOnline) {
  return on(host, [&](Host& scripted) -> Refusal {
    auto state = scripted.reachability().state();
    state.flags = isOnline ? reachability_flags::reachable : 0;
    scripted.reachability().setState(state);
    return std::nullopt;
  });
}

std::optional<Error> setDevice(vantorium::Host& host, const std::string& facts) {
  return on(host, [&](Host& scripted) -> Refusal {
    const json parsed = json::parse(facts, nullptr, false);
    if (!parsed.is_object()) return "The facts are no object of JSON. Give one such as {\"volume\":0.5}.";
    return scripted.deviceFacts().set(parsed);
  });
}

std::optional<Error> navigate(vantorium::Host& host, const std::string& url) {
  return on(host, [&](Host& scripted) { return scripted.navigate(url); });
}

std::optional<Error> failPage(vantorium::Host& host, const std::string& text) {
  return on(host, [&](Host& scripted) { return scripted.failPage(text); });
}

std::optional<Error> moveVideo(vantorium::Host& host, double position, double duration) {
  return on(host, [&](Host& scripted) { return scripted.moveVideo(position, duration); });
}

std::optional<Error> endVideo(vantorium::Host& host, VideoEnd how, const std::string& text) {
  return on(host, [&](Host& scripted) { return scripted.videoEvent(nameOf(how), text); });
}

std::optional<Error> tap(vantorium::Host& host, const std::string& control) {
  return on(host, [&](Host& scripted) { return scripted.tap(control); });
}

std::optional<Error> finishStore(vantorium::Host& host) {
  return on(host, [](Host& scripted) { return scripted.finishStore(); });
}

std::string snapshot(vantorium::Host& host) {
  auto* const scripted = headlessHost(host);
  return scripted == nullptr ? "null" : textOf(scripted->snapshot());
}

std::vector<std::string> takeEvents(vantorium::Host& host) {
  std::vector<std::string> lines;
  if (auto* const scripted = headlessHost(host)) {
    for (const json& event : scripted->takeEvents()) lines.push_back(textOf(event));
  }
  return lines;
}

std::shared_ptr<VantoriumNativeAdView> makeNativeAdView(vantorium::Host& host, double width, double height) {
  const auto isLength = [](double length) { return length >= 0 && length <= longestSide; };
  if (headlessHost(host) == nullptr || !isLength(width) || !isLength(height)) return nullptr;
  auto view = std::make_shared<VantoriumNativeAdView>(host, ui::Rect{0, 0, width, height});
  for (const std::string& outlet : VantoriumNativeAdView::outletNames()) view->makeOutlet(outlet);
  layOut(*view);
  return view;
}

std::optional<Error> setSeen(vantorium::Host& host, const std::shared_ptr<VantoriumNativeAdView>& view,
                             bool isSeen) {
  return on(host, [&](Host& scripted) -> Refusal {
    if (!view) return "The view is null. Give one of makeNativeAdView.";
    if (isSeen) {
      scripted.headlessApplication().rootView().addSubview(view);
    } else {
      view->removeFromSuperview();
    }
    return std::nullopt;
  });
}

std::optional<Error> tap(VantoriumNativeAdView& view, const std::string& outlet) {
  return errorOf(tapOutlet(view, outlet));
}

std::optional<Error> moveVideo(VantoriumNativeAdView& view, double position, double duration) {
  const auto player = playerIn(view);
  if (!player) return VantoriumError::internalError(noVideo);
  player->moveTo(position, duration);
  return std::nullopt;
}

std::optional<Error> endVideo(VantoriumNativeAdView& view, VideoEnd how, const std::string& text) {
  const auto player = playerIn(view);
  if (!player) return VantoriumError::internalError(noVideo);
  return errorOf(player->comeTo(nameOf(how), text));
}

std::string snapshot(VantoriumNativeAdView& view) { return textOf(snapshotOfNativeView(view)); }

}  // namespace vantorium::headless
