#include "torture/inventory.hpp"

#include <fmt/format.h>

#include <fstream>
#include <regex>
#include <sstream>

namespace vantorium::torture {

namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  return content.str();
}

std::string replaced(std::string text, const std::string& what, const std::string& with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
    text.replace(at, what.size(), with);
  return text;
}

/// Without identifiers, the home's name and the service's port, which no two runs share.
std::string withoutChance(const std::string& text, const fs::path& home) {
  static const std::regex identifiers("[0-9a-fA-F]{8}(-[0-9a-fA-F]{4}){3}-[0-9a-fA-F]{12}");
  return replaced(std::regex_replace(text, identifiers, "*"), home.string(), "~");
}

/// Likewise, and without what mkostemp makes up.
std::string nameOf(const fs::path& file, const fs::path& home) {
  static const std::regex madeUp("([.-])[A-Za-z0-9]{6}$");
  return std::regex_replace(withoutChance(file.string(), home), madeUp, "$1*");
}

}  // namespace

Catalogue::Catalogue(const fs::path& folder, std::string service) : service_(std::move(service)) {
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file() || entry.file_size() == 0) continue;
    names_.emplace(contentOf(entry.path()), entry.path().lexically_relative(folder).string());
  }
}

std::string Catalogue::contentName(const fs::path& file, const fs::path& home) const {
  std::error_code ignored;
  if (!fs::is_regular_file(file, ignored)) return "none";
  const std::string bytes = contentOf(file);
  const auto known = names_.find(replaced(bytes, service_, "{{base}}"));
  if (known != names_.end()) return known->second;
  if (file.extension() == ".json") return "made here";  // settings
  return fmt::format("made here, {} bytes", replaced(withoutChance(bytes, home), service_, "").size());
}

std::string Catalogue::describe(const std::string& label, const fs::path& file, const fs::path& home) const {
  return fmt::format("{} {} = {}", label, nameOf(file, home), contentName(file, home));
}

Inventory Catalogue::describeAll(const std::string& label, const fs::path& folder,
                                 const fs::path& home) const {
  Inventory lines;
  std::error_code error;
  for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code ignored;
    if (!fs::is_directory(entry->symlink_status(ignored))) lines.insert(describe(label, entry->path(), home));
  }
  return lines;
}

}  // namespace vantorium::torture
