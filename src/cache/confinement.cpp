#include "cache/confinement.hpp"

#include <fmt/format.h>

#include <string_view>

#include "platform/foundation/url.hpp"

namespace vantorium {

namespace {

/// Deeper trees serve no creative, and exhaust whoever walks or removes them.
constexpr int deepestFolder = 64;

const char* flawOf(std::string_view path) {
  if (path.empty() || path.ends_with('/')) return "names no file";
  if (path.find('\0') != std::string_view::npos) return "contains a NUL";
  int depth = 0;
  while (!path.empty()) {
    const std::string_view component = path.substr(0, path.find_first_of("/\\"));
    if (component == "..") return "leaves the folder of its ad";
    if (++depth > deepestFolder) return "is nested too deeply";
    path.remove_prefix(std::min(component.size() + 1, path.size()));
  }
  return nullptr;
}

}  // namespace

std::optional<Error> checkConfined(const std::string& path, const std::string& basePath,
                                   const std::string& source) {
  const char* flaw = "leaves the folder of its ad";
  if (path.starts_with(basePath + "/")) {
    const std::string inside = path.substr(basePath.size() + 1);
    flaw = flawOf(inside);
    // A page refers to its files by URL, so the path must hold when it is decoded once more.
    if (flaw == nullptr) flaw = flawOf(percentDecoded(inside));
  }
  if (flaw == nullptr) return std::nullopt;
  return VantoriumError::internalError(fmt::format("The path of {} {}; the file is refused.", source, flaw));
}

}  // namespace vantorium
