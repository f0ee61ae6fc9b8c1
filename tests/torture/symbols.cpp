#include "torture/symbols.hpp"

#include <dlfcn.h>
#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <regex>
#include <string_view>

namespace vantorium::torture {

namespace fs = std::filesystem;

namespace {

/// Where in the program's file the call stands that a frame returns to; none in another library.
std::optional<std::size_t> offsetOf(void* frame) {
  static const void* const program = [] {
    Dl_info self{};
    dladdr(reinterpret_cast<void*>(&offsetOf), &self);
    return self.dli_fbase;
  }();
  Dl_info info{};
  if (dladdr(frame, &info) == 0 || info.dli_fbase != program) return std::nullopt;
  return static_cast<std::size_t>(static_cast<char*>(frame) - static_cast<const char*>(program)) - 1;
}

/// "(inlined by) function(…) at /…/src/room/file.cpp:12 (discriminator 3)" as "function
/// (src/room/file.cpp:12)"; empty if it is no code of the SDK or of a host.
std::string ownName(const std::string& line) {
  static const std::regex form(R"(^(?: ?\(inlined by\) )?(.+?) at (/[^ ]+):(\d+).*)");
  std::smatch parts;
  if (!std::regex_match(line, parts, form)) return {};
  const auto path =
      fs::path(parts.str(2)).lexically_normal().lexically_relative(VANTORIUM_SOURCE_DIR).string();
  if (!path.starts_with("src/") && !path.starts_with("hosts/") && !path.starts_with("bindings/")) return {};
  // Without arguments, and without what the compiler says of templates and of where a function is hidden.
  static const std::regex noise(R"(\(anonymous namespace\)::|^void (?=\w)|vantorium::)");
  const std::string function = std::regex_replace(parts.str(1), noise, "");
  if (function.starts_with("std::")) return {};
  return fmt::format("{} ({}:{})", function.substr(0, function.find_first_of("(<", 1)), path, parts.str(3));
}

}  // namespace

void Symbols::want(std::span<void* const> frames) {
  for (void* const frame : frames)
    if (const auto offset = offsetOf(frame)) wanted_.insert(*offset);
}

void Symbols::resolve() {
  if (wanted_.empty()) return;
  const auto list = fs::temp_directory_path() / fmt::format("vantorium-torture-{}", getpid());
  if (std::FILE* const file = std::fopen(list.c_str(), "w")) {
    const std::string program = fs::read_symlink("/proc/self/exe").string();
    fmt::print(file, "-a -p -i -f -C -e {}\n", program);
    for (const std::size_t offset : wanted_) fmt::print(file, "0x{:x}\n", offset);
    std::fclose(file);
  }
  std::FILE* const answers = popen(fmt::format("addr2line @{} 2>/dev/null", list.string()).c_str(), "r");
  std::array<char, 16384> line{};
  std::vector<std::string>* names = nullptr;
  while (answers != nullptr && std::fgets(line.data(), line.size(), answers) != nullptr) {
    std::string text(line.data());
    if (!text.empty()) text.pop_back();
    if (text.starts_with("0x")) {
      names = &names_[std::stoull(text, nullptr, 16)];
      text.erase(0, text.find(": ") + 2);
    }
    if (names == nullptr) continue;
    if (std::string name = ownName(text); !name.empty()) names->push_back(std::move(name));
  }
  if (answers != nullptr) pclose(answers);
  fs::remove(list);
}

std::vector<std::string> Symbols::ownFrames(std::span<void* const> frames) const {
  std::vector<std::string> names;
  for (void* const frame : frames) {
    const auto offset = offsetOf(frame);
    const auto found = offset ? names_.find(*offset) : names_.end();
    if (found != names_.end()) names.insert(names.end(), found->second.begin(), found->second.end());
  }
  return names;
}

}  // namespace vantorium::torture
