// Holds the include lines of the tree against the drawing of the rooms: arrows point down.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace vantorium {
namespace {

/// The drawing: each room and the rooms right below it. A file may include its own room and all that its
/// arrows lead to.
const std::map<std::string, std::vector<std::string>> arrows{
    {"platform/foundation", {}},
    {"platform/net", {"platform/foundation"}},
    {"platform/ui", {"platform/foundation"}},
    {"platform/av", {"platform/ui"}},
    {"platform/web", {"platform/ui"}},
    {"platform", {"platform/net", "platform/av", "platform/web"}},
    {"context", {"platform"}},
    {"model", {"context"}},
    {"device", {"model"}},
    {"archive", {"platform"}},
    {"cache", {"device", "archive"}},
    {"protocol", {"cache"}},
    {"client", {"protocol"}},
    {"precache", {"client"}},
    {"native_ads", {"client"}},
    {"screens", {"client"}},
    {"facade", {"precache", "native_ads", "screens"}},
    {"hosts/headless", {"platform", "native_ads"}},
    {"hosts/gtk", {"platform", "native_ads"}},
    {"bindings/c", {"facade"}},
    {"bindings/c/hosts", {"bindings/c", "hosts/headless", "hosts/gtk"}},
};

/// What the core links, by the first part of its headers' names. A toolkit is none of it.
const std::set<std::string> coreLibraries{"curl", "fmt", "nlohmann", "unicode", "minizip", "zlib.h", "asio"};
const std::set<std::string> systemHeaders{
    "arpa",    "dirent.h", "dlfcn.h",   "execinfo.h", "fcntl.h",  "ifaddrs.h", "linux",     "net",
    "netdb.h", "netinet",  "pthread.h", "poll.h",     "signal.h", "spawn.h",   "sys",       "time.h",
    "pwd.h",   "unistd.h", "locale.h",  "errno.h",    "stdlib.h", "stdio.h",   "langinfo.h"};

struct Include {
  std::string file;  ///< from the root of the tree, with slashes
  int line = 0;
  bool quoted = false;
  std::string target;
};

std::vector<Include> includesOf(const std::string& file, std::istream& text) {
  static const std::regex pattern(R"re(^\s*#\s*include\s*(["<])([^">]+)[">])re");
  std::vector<Include> includes;
  std::smatch match;
  int number = 0;
  for (std::string line; std::getline(text, line);) {
    ++number;
    if (std::regex_search(line, match, pattern))
      includes.push_back({file, number, match[1] == "\"", match[2]});
  }
  return includes;
}

bool startsWith(const std::string& text, const std::string& prefix) { return text.rfind(prefix, 0) == 0; }

std::string firstPart(const std::string& path) { return path.substr(0, path.find('/')); }

/// The room of a path that begins with a room's name: the innermost that fits. None for a file of no room.
std::optional<std::string> roomOf(const std::string& path) {
  std::optional<std::string> room;
  for (const auto& [name, below] : arrows) {
    if (startsWith(path, name + "/") && (!room || name.size() > room->size())) room = name;
  }
  return room;
}

/// Source files of the core are included from src/, so their rooms are named without it.
std::optional<std::string> roomOfFile(const std::string& file) {
  return roomOf(startsWith(file, "src/") ? file.substr(4) : file);
}

bool mayInclude(const std::string& from, const std::string& to) {
  if (from == to) return true;
  const auto& below = arrows.at(from);
  return std::any_of(below.begin(), below.end(),
                     [&](const std::string& room) { return mayInclude(room, to); });
}

/// What is wrong with an include of a room's file, or nothing.
std::optional<std::string> roomComplaint(const Include& include) {
  const auto from = roomOfFile(include.file);
  if (!from) return "is in no room: add the folder to the drawing and to this test's arrows";
  if (!include.quoted) return std::nullopt;
  const auto to = roomOf(include.target);
  if (!to) return "names no room: include by the path from src/ (or from the root, for hosts and bindings)";
  if (mayInclude(*from, *to)) return std::nullopt;
  return "points the wrong way: " + *from + " -> " + *to;
}

bool isStandard(const std::string& header) { return header.find_first_of("./") == std::string::npos; }

std::optional<std::string> libraryComplaint(const Include& include) {
  const std::string library = firstPart(include.target);
  if (isStandard(include.target) || library == "vantorium" || coreLibraries.contains(library) ||
      systemHeaders.contains(library)) {
    return std::nullopt;
  }
  return "is a header of a library that the core does not link: the core knows no toolkit";
}

std::optional<std::string> publicComplaint(const Include& include) {
  if (include.quoted) return "is not for applications: public headers include <vantorium/...> alone";
  static const std::set<std::string> ofC{"stdbool.h", "stddef.h", "stdint.h"};
  const bool mayNameToolkit =
      startsWith(include.file, "include/vantorium/gtk") && firstPart(include.target).starts_with("gtk");
  if (isStandard(include.target) || ofC.contains(include.target) ||
      firstPart(include.target) == "vantorium" || mayNameToolkit) {
    return std::nullopt;
  }
  return "would be needed by every application: public headers include the standard library and "
         "<vantorium/...>";
}

std::optional<std::string> complaint(const Include& include) {
  std::optional<std::string> wrong;
  if (startsWith(include.file, "include/")) {
    wrong = publicComplaint(include);
  } else {
    wrong = roomComplaint(include);
    if (!wrong && !include.quoted && startsWith(include.file, "src/")) wrong = libraryComplaint(include);
  }
  if (!wrong) return std::nullopt;
  return include.file + ":" + std::to_string(include.line) + ": " + include.target + " " + *wrong;
}

std::vector<Include> includesOfTree(const std::filesystem::path& root) {
  std::vector<Include> all;
  for (const char* const folder : {"include", "src", "hosts", "bindings"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / folder)) {
      const auto extension = entry.path().extension();
      if (extension != ".hpp" && extension != ".cpp" && extension != ".h") continue;
      std::ifstream text(entry.path());
      const auto found = includesOf(entry.path().lexically_relative(root).generic_string(), text);
      all.insert(all.end(), found.begin(), found.end());
    }
  }
  return all;
}

std::string complaintAbout(const std::string& file, const std::string& line) {
  std::istringstream text("#pragma once\n" + line + "\n");
  const auto includes = includesOf(file, text);
  return includes.size() == 1 ? complaint(includes[0]).value_or("") : "not one include";
}

TEST(IncludeArrows, PointDownEverywhere) {
  const auto includes = includesOfTree(VANTORIUM_SOURCE_DIR);
  std::set<std::string> rooms;
  for (const auto& include : includes) {
    rooms.insert(roomOfFile(include.file).value_or(""));
    if (const auto wrong = complaint(include)) ADD_FAILURE() << *wrong;
  }
  // A test that reads nothing would find nothing: the whole height of the drawing was seen.
  for (const char* const room :
       {"facade", "screens", "client", "platform/foundation", "hosts/headless", "bindings/c"}) {
    EXPECT_TRUE(rooms.contains(room)) << room;
  }
}

TEST(IncludeArrows, AreFoundWhenTheyPointUpOrSideways) {
  EXPECT_EQ(complaintAbout("src/cache/file.hpp", "#include \"client/client.hpp\""),
            "src/cache/file.hpp:2: client/client.hpp points the wrong way: cache -> client");
  const std::array<std::array<const char*, 3>, 14> bad{{
      {"src/platform/ui/view.hpp", "#include \"platform/net/http_session.hpp\"",
       "platform/ui -> platform/net"},
      {"src/platform/ui/layer.hpp", "# include \"platform/av/media_player.hpp\"",
       "platform/ui -> platform/av"},
      {"src/platform/foundation/url.cpp", "#include \"platform/host.hpp\"",
       "platform/foundation -> platform"},
      {"src/platform/av/media_player.hpp", "#include \"platform/web/web_engine.hpp\"", "-> platform/web"},
      {"src/screens/campaign_vc.cpp", "#include \"precache/campaign_precacher.hpp\"", "screens -> precache"},
      {"src/facade/sdk.cpp", "#include \"hosts/headless/headless_host.hpp\"", "facade -> hosts/headless"},
      {"hosts/gtk/stage.cpp", "#include \"hosts/headless/main_loop.hpp\"", "hosts/gtk -> hosts/headless"},
      {"hosts/gtk/stage.cpp", "#include \"screens/campaign_vc.hpp\"", "hosts/gtk -> screens"},
      {"src/facade/sdk.cpp", "#include \"bindings/c/call.hpp\"", "facade -> bindings/c"},
      {"src/cache/file.cpp", "#include \"file.hpp\"", "names no room"},
      {"src/cellar/wine.cpp", "#include <string>", "is in no room"},
      {"src/screens/web_view.cpp", "#include <webkit/webkit.h>", "the core knows no toolkit"},
      {"src/platform/ui/view.cpp", "  #include <gtkmm.h>", "the core knows no toolkit"},
      {"include/vantorium/error.hpp", "#include <nlohmann/json.hpp>", "every application"},
  }};
  for (const auto& [file, line, expected] : bad) {
    EXPECT_NE(complaintAbout(file, line).find(expected), std::string::npos)
        << file << " " << line << ": \"" << complaintAbout(file, line) << '"';
  }
}

TEST(IncludeArrows, AreLeftAloneWhenTheyPointDown) {
  const std::array<std::array<const char*, 2>, 8> good{{
      {"src/facade/sdk.cpp", "#include \"platform/foundation/url.hpp\""},
      {"src/screens/campaign_vc.cpp", "#include \"screens/web_view.hpp\""},
      {"src/platform/host.hpp", "#include \"platform/web/web_engine.hpp\""},
      {"src/platform/net/http_session.cpp", "#include <curl/curl.h>"},
      {"src/model/campaign.hpp", "#include <vantorium/options.hpp>"},
      {"hosts/gtk/stage.cpp", "#include <gtkmm.h>"},
      {"hosts/gtk/stage.cpp", "#include \"platform/ui/window.hpp\""},
      {"include/vantorium/gtk.hpp", "#include <gtkmm/window.h>"},
  }};
  for (const auto& [file, line] : good) EXPECT_EQ(complaintAbout(file, line), "");
}

}  // namespace
}  // namespace vantorium
