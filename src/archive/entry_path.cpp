#include "archive/entry_path.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "archive/zip_limits.hpp"
#include "platform/foundation/files.hpp"

namespace vantorium {

namespace {

constexpr std::size_t longestShownName = 100;

/// What is wrong with the name as a whole, or null. Its "\" have become "/".
const char* flawOf(const std::string& name) {
  if (name.empty()) return "has no name";
  if (name.find('\0') != std::string::npos) return "has a NUL in its name";
  if (!isUTF8(name)) return "has a name that is not UTF-8 text";
  if (name.front() == '/') return "has an absolute name";
  return nullptr;
}

void append(std::string& folder, std::string_view part) {
  if (part.empty()) return;
  if (!folder.empty()) folder += '/';
  folder += part;
}

}  // namespace

std::string EntryPath::relative() const {
  std::string path = folder;
  append(path, name);
  return path;
}

std::optional<EntryPath> readEntryPath(std::string name, const char*& flaw) {
  std::ranges::replace(name, '\\', '/');
  if ((flaw = flawOf(name)) != nullptr) return std::nullopt;
  EntryPath path;
  int depth = 0;
  for (std::string_view rest = name; !rest.empty();) {
    const std::string_view part = rest.substr(0, rest.find('/'));
    const bool isLast = part.size() == rest.size();
    rest.remove_prefix(std::min(part.size() + 1, rest.size()));
    if (part == "..") flaw = "has a name that leads out of the destination";
    if (isLast && part == ".") flaw = "has a name that is no file's";
    if (!isLast && ++depth > deepestZipFolder) flaw = "is nested too deeply";
    if (flaw != nullptr) return std::nullopt;
    if (isLast) {
      path.name = part;
    } else if (part != ".") {
      append(path.folder, part);
    }
  }
  return path;
}

std::string shownName(std::string_view name) {
  std::string shown = "\"";
  for (const char c : name.substr(0, longestShownName)) {
    if (c >= ' ' && c <= '~') {
      shown += c;
    } else {
      shown += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
    }
  }
  return shown + (name.size() > longestShownName ? "\"..." : "\"");
}

}  // namespace vantorium
