#include <fmt/format.h>

#include <stdexcept>

#include "sandbox/service/catalogue.hpp"

namespace vantorium::sandbox {

namespace fs = std::filesystem;

fs::path defaultCatalogue() {
  constexpr int levels = 3;  // PREFIX/bin is one below PREFIX; a build keeps its programs deeper
  const fs::path program = fs::read_symlink("/proc/self/exe");
  fs::path folder = program.parent_path();
  for (int level = 0; level < levels; ++level) {
    folder = folder.parent_path();
    std::error_code failure;
    if (auto found = fs::canonical(folder / "share/vantorium/sandbox", failure); !failure) return found;
  }
  throw std::runtime_error(
      fmt::format("there is no share/vantorium/sandbox beside or above {}: name the folder to serve with "
                  "--catalogue",
                  program.parent_path().string()));
}

}  // namespace vantorium::sandbox
