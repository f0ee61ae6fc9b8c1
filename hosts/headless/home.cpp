#include "hosts/headless/home.hpp"

#include <fmt/format.h>
#include <unistd.h>

namespace vantorium::headless {

Refusal makeHome(std::filesystem::path& home) {
  if (home.empty()) return "The home is empty. Give a folder to keep settings and caches in.";
  std::error_code error;
  std::filesystem::create_directories(home, error);
  const auto path = std::filesystem::canonical(home, error);
  if (error || !std::filesystem::is_directory(path, error) || access(path.c_str(), W_OK | X_OK) != 0) {
    return fmt::format(
        "The home \"{}\" is no folder that can be written to, and cannot be made one. Give another.",
        home.string());
  }
  home = path;
  return std::nullopt;
}

}  // namespace vantorium::headless
