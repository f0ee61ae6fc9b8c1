#pragma once

#include <dlfcn.h>

// `FOLLOWING(f)` in a function that stands in for `f` is the true `f`.
// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): needs the name both as a text and for its type
#define FOLLOWING(name) \
  static auto* const following = reinterpret_cast<decltype(&::name)>(dlsym(RTLD_NEXT, #name))
