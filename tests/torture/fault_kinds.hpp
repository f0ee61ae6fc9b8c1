#pragma once

#include <vector>

#include "torture/faults/faults.hpp"

namespace vantorium::torture {

/// All ways of failing that are tried.
const std::vector<Fault>& faults();

}  // namespace vantorium::torture
