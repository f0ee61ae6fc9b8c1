#pragma once

#include <functional>

#include <vantorium/export.h>

/// The SDK's few worker threads, shared by the process. Work must not block on other work of the pool.
namespace vantorium::workers {

/// Runs `work` on some worker thread. Any thread. Where the system refuses threads, as few as one serve;
/// while it refuses every one, work waits, and each further call asks again. Work that has not run when the
/// process ends is dropped. Work that throws is destroyed, with a word on the console, and the thread goes
/// on; see `CompletionGuard` for what must happen all the same. Throws std::bad_alloc, and has then taken
/// nothing.
VANTORIUM_HOST_API void async(std::function<void()> work);

}  // namespace vantorium::workers
