#include "platform/foundation/run_or_drop.hpp"

#include <array>
#include <cstdio>

#include "platform/foundation/console.hpp"

namespace vantorium {

void tellDropped(const char* why) noexcept {
  std::array<char, 256> line{};  // there may be no memory for another
  std::snprintf(line.data(), line.size(), "vantorium: a piece of work was dropped: %s", why);
  printToConsole(line.data());
}

}  // namespace vantorium
