#pragma once

#include <optional>
#include <thread>

namespace vantorium::c {

/// The thread on which records are used; none while there is no host.
std::optional<std::thread::id> mainThread();

}  // namespace vantorium::c
