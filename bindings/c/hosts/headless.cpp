// The C API of the headless host.
#include <cstring>

#include <vantorium/headless.h>
#include <vantorium/headless.hpp>

#include "bindings/c/call.hpp"
#include "hosts/headless/headless_host.hpp"
#include "hosts/headless/home.hpp"

using namespace vantorium;
using namespace vantorium::c;

namespace {

/// The host, if it is a headless one.
Host& scripted(vantorium_host* host) {
  const auto given = object(host, "host");
  if (dynamic_cast<headless::Host*>(given.get()) == nullptr)
    refuse("\"host\" is no headless host. Give one of vantorium_headless_host_new.");
  return *given;  // hosts stay
}

/// Has `act` done on the host; notes why when it answers with an error.
template <typename Act>
bool on(vantorium_host* host, Act act) {
  return perform([&] { refuseIf(act(scripted(host))); });
}

template <typename Act>
bool onView(vantorium_native_ad_view* view, Act act) {
  return perform([&] { refuseIf(act(*object(view, "view"))); });
}

headless::VideoEnd ending(vantorium_headless_video_end how) {
  switch (how) {
    case VANTORIUM_HEADLESS_VIDEO_ENDED:
      return headless::VideoEnd::ended;
    case VANTORIUM_HEADLESS_VIDEO_FAILED_TO_END:
      return headless::VideoEnd::failedToEnd;
    case VANTORIUM_HEADLESS_VIDEO_FAILED:
      return headless::VideoEnd::failed;
  }
  refuse("\"how\" names no end of a video. Give a VANTORIUM_HEADLESS_VIDEO_… constant.");
}

}  // namespace

vantorium_host* vantorium_headless_host_new(const char* home, bool virtual_time) {
  return call<vantorium_host*>(nullptr, [&] {
    std::filesystem::path folder = text(home, "home");
    if (const auto refusal = headless::makeHome(folder)) refuse(*refusal);
    return giveHost(headless::makeHost({.home = folder, .virtualTime = virtual_time}));
  });
}

bool vantorium_headless_run_until(vantorium_host* host, bool (*done)(void*), void* user_data,
                                  double timeout) {
  return call(false, [&] {
    if (done == nullptr) refuse("\"done\" is null. Give a function that says when to stop.");
    if (headless::runUntil(
            scripted(host), [&] { return done(user_data); }, timeout))
      return true;
    refuse("What was waited for did not happen in time.");
  });
}

bool vantorium_headless_advance(vantorium_host* host, double seconds) {
  return on(host, [&](Host& given) { return headless::advance(given, seconds); });
}

bool vantorium_headless_set_online(vantorium_host* host, bool is_online) {
  return on(host, [&](Host& given) { return headless::setOnline(given, is_online); });
}

bool vantorium_headless_set_device(vantorium_host* host, const char* facts) {
  return on(host, [&](Host& given) { return headless::setDevice(given, text(facts, "facts")); });
}

bool vantorium_headless_navigate(vantorium_host* host, const char* url) {
  return on(host, [&](Host& given) { return headless::navigate(given, text(url, "url")); });
}

bool vantorium_headless_fail_page(vantorium_host* host, const char* reason) {
  return on(host, [&](Host& given) { return headless::failPage(given, text(reason, "text")); });
}

bool vantorium_headless_move_video(vantorium_host* host, double position, double duration) {
  return on(host, [&](Host& given) { return headless::moveVideo(given, position, duration); });
}

bool vantorium_headless_end_video(vantorium_host* host, vantorium_headless_video_end how,
                                  const char* reason) {
  return on(host, [&](Host& given) {
    return headless::endVideo(given, ending(how), textIfAny(reason, "text").value_or(""));
  });
}

bool vantorium_headless_tap(vantorium_host* host, const char* control) {
  return on(host, [&](Host& given) { return headless::tap(given, text(control, "control")); });
}

bool vantorium_headless_finish_store(vantorium_host* host) {
  return on(host, [](Host& given) { return headless::finishStore(given); });
}

char* vantorium_headless_snapshot(vantorium_host* host) {
  return call<char*>(nullptr, [&] { return strdup(headless::snapshot(scripted(host)).c_str()); });
}

char* vantorium_headless_take_events(vantorium_host* host) {
  return call<char*>(nullptr, [&] {
    std::string all;
    for (const auto& line : headless::takeEvents(scripted(host))) all += line + "\n";
    return strdup(all.c_str());
  });
}

vantorium_native_ad_view* vantorium_headless_native_ad_view_new(vantorium_host* host, double width,
                                                                double height) {
  return call<vantorium_native_ad_view*>(nullptr, [&] {
    auto view = headless::makeNativeAdView(scripted(host), width, height);
    if (!view) refuse(R"("width" and "height" are no size. Give each from 0 to 100000 points.)");
    return giveToThisThread<vantorium_native_ad_view>(std::move(view));
  });
}

bool vantorium_headless_set_seen(vantorium_host* host, vantorium_native_ad_view* view, bool is_seen) {
  return on(host, [&](Host& given) { return headless::setSeen(given, object(view, "view"), is_seen); });
}

bool vantorium_headless_view_tap(vantorium_native_ad_view* view, const char* outlet) {
  return onView(view,
                [&](VantoriumNativeAdView& given) { return headless::tap(given, text(outlet, "outlet")); });
}

bool vantorium_headless_view_move_video(vantorium_native_ad_view* view, double position, double duration) {
  return onView(view,
                [&](VantoriumNativeAdView& given) { return headless::moveVideo(given, position, duration); });
}

bool vantorium_headless_view_end_video(vantorium_native_ad_view* view, vantorium_headless_video_end how,
                                       const char* reason) {
  return onView(view, [&](VantoriumNativeAdView& given) {
    return headless::endVideo(given, ending(how), textIfAny(reason, "text").value_or(""));
  });
}

char* vantorium_headless_view_snapshot(vantorium_native_ad_view* view) {
  return call<char*>(nullptr, [&] { return strdup(headless::snapshot(*object(view, "view")).c_str()); });
}
