#pragma once

#include <memory>

#include <vantorium/vantorium.h>

#include "bindings/c/handles.hpp"

namespace vantorium::c {

/// The handle of a delegate for the application, with a reference more; null for null.
vantorium_delegate* handleOf(std::shared_ptr<VantoriumDelegate> delegate);

}  // namespace vantorium::c
