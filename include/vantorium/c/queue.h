#ifndef VANTORIUM_C_QUEUE_H
#define VANTORIUM_C_QUEUE_H

#include <vantorium/c/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A new queue served by the SDK's few worker threads, one piece of work at a time and in order, so its
 *  work must not wait for a completion of the SDK. `label` shows in debuggers. Work handed over still runs
 *  when the queue has been given up. Null on failure. */
VANTORIUM_API vantorium_queue* vantorium_queue_serial_new(const char* label);

/** Hands `work` over to be run later, with `user_data`, by the thread or loop that the queue stands for.
 *  Called on any thread, on several at a time; it must return at once and must not run the work itself.
 *
 *  The handle is the callee's: `vantorium_work_run` uses it up, `vantorium_release` drops the work. Besides
 *  completions the queue carries steps of the SDK's own, such as those of precaching native ads; a
 *  completion whose work, or a step before it, is dropped does not come. */
typedef void (*vantorium_queue_handler)(void* user_data, vantorium_work* work);

/** A queue of the application's making: `async` gets all work that the SDK hands to it. `free_user_data` is
 *  called when neither the application nor the SDK needs the queue any more, on any thread. Null on
 *  failure, and `user_data` has been freed then. */
VANTORIUM_API vantorium_queue* vantorium_queue_new(vantorium_queue_handler async, void* user_data,
                                                   vantorium_callback free_user_data);

/** Runs the work on this thread and gives its handle up. False when it was run or dropped before. */
VANTORIUM_API bool vantorium_work_run(vantorium_work* work);

/** Has `work` called with `user_data` on the queue, then `free_user_data`. It never runs inside this call.
 *  False, with `user_data` freed, when there is no queue or no work. */
VANTORIUM_API bool vantorium_queue_async(vantorium_queue* queue, vantorium_callback work, void* user_data,
                                         vantorium_callback free_user_data);

#ifdef __cplusplus
}
#endif

#endif
