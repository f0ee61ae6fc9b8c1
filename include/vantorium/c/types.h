#ifndef VANTORIUM_C_TYPES_H
#define VANTORIUM_C_TYPES_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include <vantorium/export.h>

/** @file
 *  What all of the C API has in common.
 *
 *  **Handles.** An object of the SDK is known by a handle, a pointer that points to nothing and is only
 *  given back. It counts references: a function that returns a handle, named `…_new` or `…_get…`, gives one
 *  that is the caller's, to be given up with `vantorium_release`; a handle that comes as an argument of a
 *  callback is lent for the call, and `vantorium_retain` keeps it (but the work that a queue's function gets
 *  is the function's, see `vantorium_queue_new`). One object may have several handles, so
 *  they are not to be compared; no handle is ever used for a second object, so one that was given up, that
 *  is of another kind, or that is no handle at all is recognised.
 *
 *  **Failures.** A function that got such a handle, a null pointer where none may be, or text that is not
 *  UTF-8 does nothing, returns `false`, null or 0, and notes why: `vantorium_last_error`. Functions with a
 *  completion return nothing and tell it instead. Nothing is thrown; callbacks must neither throw nor leave
 *  by `longjmp`.
 *
 *  **Text** is UTF-8 ended by a zero byte; the SDK copies what it is given. A text that it returns as
 *  `const char *` belongs to the object it was asked of: it is valid until that property is changed or the
 *  last reference to the object is given up.
 *
 *  **Choices** are integers with named values; one without a name is a failure.
 *
 *  **Threads.** Unless a function says otherwise it may be called on any thread, one at a time for one
 *  object. */

#ifdef __cplusplus
extern "C" {
#endif

/** A failure. Immutable. */
typedef struct vantorium_error vantorium_error;
/** A queue that completions are called on; null stands for the main queue of the host. */
typedef struct vantorium_queue vantorium_queue;
/** One piece of work handed to a queue of the application's making. */
typedef struct vantorium_work vantorium_work;
/** The machine and toolkit that ads run on: see `vantorium/gtk.h` and `vantorium/headless.h`. It belongs to
 *  the thread that made it, and is used and given up there; the host itself stays until the process ends. */
typedef struct vantorium_host vantorium_host;
/** Who hears of configuration, precaching, clicks and rewards. */
typedef struct vantorium_delegate vantorium_delegate;
/** What the application tells about its user. */
typedef struct vantorium_parameters vantorium_parameters;
/** The base of all option objects: see `VANTORIUM_AD_OPTIONS`. */
typedef struct vantorium_ad_options vantorium_ad_options;
/** How native ads are precached. */
typedef struct vantorium_native_ad_options vantorium_native_ad_options;
/** How the video of a native ad behaves. */
typedef struct vantorium_media_view_options vantorium_media_view_options;
/** The application's own parameters for one showing or one click. */
typedef struct vantorium_server_parameter vantorium_server_parameter;
/** One native ad. */
typedef struct vantorium_native_ad vantorium_native_ad;
/** One picture or video of a native ad. */
typedef struct vantorium_native_ad_asset vantorium_native_ad_asset;
/** A place for a native ad in the application's interface. It belongs to the thread that made it. */
typedef struct vantorium_native_ad_view vantorium_native_ad_view;

/** Any option object as one of the base. */
#define VANTORIUM_AD_OPTIONS(options) ((vantorium_ad_options*)(options))

/** A function that gets nothing but the application's own pointer, such as the one that frees what it
 *  points to. */
typedef void (*vantorium_callback)(void* user_data);

/** Called once with the result of an operation. `error` is null, or lent for the call.
 *
 *  Every function that takes a completion also takes `user_data`, which is passed to it, and
 *  `free_user_data`, which is called with it once: right after the completion on the same thread, or in its
 *  place when a queue of the application's drops the work. What has not run when the process ends, or when
 *  the application no longer runs its main loop, is neither called nor freed. Both may be null, and so may
 *  the completion. */
typedef void (*vantorium_completion)(void* user_data, bool success, vantorium_error* error);

/** The version of the library that runs, "0.1.0"; that of the headers is VANTORIUM_VERSION in
 *  `vantorium/version.h`. */
VANTORIUM_API const char* vantorium_version(void);

/** Keeps the object: returns `handle`, to be given up once more than before, or null when it is no handle
 *  of an object that is there. */
VANTORIUM_API void* vantorium_retain(void* handle);
/** Gives a reference up; with the last one the handle ends, and what the SDK itself still needs of the
 *  object lives on. Null is let pass. False when `handle` is no handle of an object that is there, or when
 *  it is one of a host or view that belongs to another thread; nothing happens then. */
VANTORIUM_API bool vantorium_release(void* handle);
/** Frees a text that a function gave as `char *`. Null is let pass. */
VANTORIUM_API void vantorium_free_text(char* text);

#ifdef __cplusplus
}
#endif

#endif
