#pragma once

#include <cstdlib>

/// What must hold for every input; the fuzzer keeps the one for which it does not.
#define FUZZ_CHECK(condition)  \
  do {                         \
    if (!(condition)) abort(); \
  } while (false)
