#ifndef VANTORIUM_HEADLESS_H
#define VANTORIUM_HEADLESS_H

#include <vantorium/vantorium.h>

/** @file
 *  The host without a screen, for tests of an application's ad flow: the test is the user, the page, the
 *  film, the store and the device. The network is real.
 *
 *  Everything here is for the thread that made the host, which is the main thread. A function that asks for
 *  something that cannot be done changes nothing, returns false and notes why. */

#ifdef __cplusplus
extern "C" {
#endif

/** Makes the host. `home` is the folder of its settings and caches, made unless it is there: two hosts with
 *  the same home, one after the other, are two launches of one installation. With `virtual_time` time stands
 *  still until `vantorium_headless_advance`. Null on failure, such as a home that cannot be written to. */
VANTORIUM_API vantorium_host* vantorium_headless_host_new(const char* home, bool virtual_time);
/** Runs the main queue until `done` answers true, asked with `user_data` after each piece of work. False
 *  when `timeout` seconds of real time have passed first. */
VANTORIUM_API bool vantorium_headless_run_until(vantorium_host* host, bool (*done)(void* user_data),
                                                void* user_data, double timeout);
/** Moves virtual time on by so many seconds, running each timer on the way, in order. */
VANTORIUM_API bool vantorium_headless_advance(vantorium_host* host, double seconds);
/** Whether the device is online; it is at first. */
VANTORIUM_API bool vantorium_headless_set_online(vantorium_host* host, bool is_online);
/** Sets facts of the device, an object of JSON such as {"volume":0.5,"idfa":null}; null takes one away. The
 *  names are those of the "set" of scripted runs. All are set, or none. */
VANTORIUM_API bool vantorium_headless_set_device(vantorium_host* host, const char* facts);

/** The page in front follows a link to `url`, such as "closead://". */
VANTORIUM_API bool vantorium_headless_navigate(vantorium_host* host, const char* url);
/** The page in front fails to load. */
VANTORIUM_API bool vantorium_headless_fail_page(vantorium_host* host, const char* text);
/** The video in front is at `position` of `duration` seconds. */
VANTORIUM_API bool vantorium_headless_move_video(vantorium_host* host, double position, double duration);
/** How a video comes to its end. */
typedef int32_t vantorium_headless_video_end;
/** Its values. */
enum vantorium_headless_video_ends {
  VANTORIUM_HEADLESS_VIDEO_ENDED = 0,         /**< it was played to its end */
  VANTORIUM_HEADLESS_VIDEO_FAILED_TO_END = 1, /**< it broke off */
  VANTORIUM_HEADLESS_VIDEO_FAILED = 2         /**< it could not be played at all */
};
/** The video in front ends; `text`, which may be null, says why if it failed. */
VANTORIUM_API bool vantorium_headless_end_video(vantorium_host* host, vantorium_headless_video_end how,
                                                const char* text);
/** The user taps the control of the screen in front that has this name in its snapshot, such as
 *  "closeWebViewButton", or goes "back". */
VANTORIUM_API bool vantorium_headless_tap(vantorium_host* host, const char* control);
/** The user closes the store's sheet. */
VANTORIUM_API bool vantorium_headless_finish_store(vantorium_host* host);
/** The screen in front as JSON, as scripted runs tell it; "null" when no ad is shown. To be freed with
 *  `vantorium_free_text`; null on failure. */
VANTORIUM_API char* vantorium_headless_snapshot(vantorium_host* host);
/** What happened since the last call, each an object of JSON on a line ended by "\n", as scripted runs tell
 *  it. To be freed with `vantorium_free_text`; null on failure. */
VANTORIUM_API char* vantorium_headless_take_events(vantorium_host* host);

/** A place for a native ad, of the given size in points, each side from 0 to 100,000, with all outlets. It
 *  is not seen until `vantorium_headless_set_seen`. Null on failure. */
VANTORIUM_API vantorium_native_ad_view* vantorium_headless_native_ad_view_new(vantorium_host* host,
                                                                              double width, double height);
/** Puts the view into the application's window, or takes it out. */
VANTORIUM_API bool vantorium_headless_set_seen(vantorium_host* host, vantorium_native_ad_view* view,
                                               bool is_seen);
/** The user taps an outlet, such as "callToActionButton"; "mediaView" stands for its sound's button. */
VANTORIUM_API bool vantorium_headless_view_tap(vantorium_native_ad_view* view, const char* outlet);
/** The view's video is at `position` of `duration` seconds. */
VANTORIUM_API bool vantorium_headless_view_move_video(vantorium_native_ad_view* view, double position,
                                                      double duration);
/** The view's video ends. */
VANTORIUM_API bool vantorium_headless_view_end_video(vantorium_native_ad_view* view,
                                                     vantorium_headless_video_end how, const char* text);
/** The view as JSON, as that of a screen. To be freed with `vantorium_free_text`; null on failure. */
VANTORIUM_API char* vantorium_headless_view_snapshot(vantorium_native_ad_view* view);

#ifdef __cplusplus
}
#endif

#endif
