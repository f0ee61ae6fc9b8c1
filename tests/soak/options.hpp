#pragma once

#include <cstdint>
#include <filesystem>

namespace vantorium::soak {

/// What a soak is to do.
struct Options {
  int rounds = 2000;
  std::uint64_t seed = 1;      ///< the same seed makes the same choices; the network is as it is
  int samples = 40;            ///< how often everything is brought to rest, checked and measured
  double budgetMiB = 256;      ///< the most that the cache may keep
  std::filesystem::path home;  ///< folder of the application; made by the caller
  std::filesystem::path sandbox = VANTORIUM_SOAK_SANDBOX;      ///< the ad service's program
  std::filesystem::path catalogue = VANTORIUM_SOAK_CATALOGUE;  ///< what it serves
};

}  // namespace vantorium::soak
