#pragma once

#include <vector>

#include "torture/stage.hpp"

namespace vantorium::torture {

/// A piece of what applications do. Its functions tell whether all calls succeeded.
struct Scenario {
  const char* name;
  bool (*prepare)(Stage& stage);  ///< without a fault
  bool (*work)(Stage& stage);     ///< with one; then again, without
};

const std::vector<Scenario>& scenarios();

}  // namespace vantorium::torture
