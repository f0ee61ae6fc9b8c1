#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantorium {

/// Where an entry of an archive goes, below the destination. No part of it is ".." or ".", or empty.
struct EntryPath {
  std::string folder;  ///< with "/" between its parts; empty for the destination itself
  std::string name;    ///< of the file in that folder; empty when the entry is a folder

  bool isFolder() const { return name.empty(); }
  std::string relative() const;
};

/// Reads the name of an entry; "\" counts as "/". None, with `flaw` set to what is wrong with it, when a file
/// of that name would leave the destination or has no place in it.
std::optional<EntryPath> readEntryPath(std::string name, const char*& flaw);

/// The name for an error's text: quoted, shortened, and with everything but printable ASCII escaped.
std::string shownName(std::string_view name);

}  // namespace vantorium
