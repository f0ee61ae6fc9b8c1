// Holds the include lines of the tree against the drawing of the rooms: arrows point down.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace vantorium {
namespace {

/// Each room and those that its files include: all of them, and none besides.
const std::map<std::string, std::set<std::string>> arrows{
    {"platform/foundation", {}},
    {"platform/net", {"platform/foundation"}},
    {"platform/ui", {"platform/foundation"}},
    {"platform/av", {"platform/ui"}},
    {"platform/web", {"platform/ui"}},
    {"platform", {"platform/foundation", "platform/net", "platform/ui", "platform/av", "platform/web"}},
    {"context", {"platform", "platform/foundation"}},
    {"model", {"platform/foundation"}},
    // Four siblings: one service, one folder, one archive, one machine.
    {"protocol", {"model", "context", "platform/net", "platform/foundation"}},
    {"cache", {"model", "context", "platform/net", "platform/foundation"}},
    {"archive", {"platform/foundation"}},
    {"device", {"model", "context", "platform", "platform/net", "platform/foundation"}},
    {"precache", {"protocol", "cache", "archive", "model", "context", "platform/foundation"}},
    {"native_ads",
     {"protocol", "cache", "model", "context", "platform", "platform/ui", "platform/av",
      "platform/foundation"}},
    {"screens",
     {"protocol", "cache", "context", "platform", "platform/ui", "platform/av", "platform/web",
      "platform/foundation"}},
    {"facade",
     {"precache", "native_ads", "screens", "protocol", "cache", "device", "model", "context", "platform/net",
      "platform/foundation"}},
    {"hosts/headless",
     {"native_ads", "platform", "platform/net", "platform/ui", "platform/av", "platform/web",
      "platform/foundation"}},
    {"hosts/gtk",
     {"native_ads", "platform", "platform/net", "platform/ui", "platform/av", "platform/web",
      "platform/foundation"}},
    {"bindings/c", {"facade", "platform/foundation"}},
    {"bindings/c/hosts", {"bindings/c", "hosts/headless", "hosts/gtk"}},
};

/// What the core links, by the first part of its headers' names. A toolkit is none of it.
const std::set<std::string> coreLibraries{"curl", "fmt", "nlohmann", "unicode", "isa-l", "minizip", "zlib.h"};
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
  return from == to || arrows.at(from).contains(to);
}

/// What is wrong with an include of a room's file, or nothing.
std::optional<std::string> roomComplaint(const Include& include) {
  const auto from = roomOfFile(include.file);
  if (!from) return "is in no room: add the folder to the drawing and to this test's arrows";
  if (!include.quoted) return std::nullopt;
  const auto to = roomOf(include.target);
  if (!to) return "names no room: include by the path from src/ (or from the root, for hosts and bindings)";
  if (mayInclude(*from, *to)) return std::nullopt;
  return "is an arrow that is not drawn: " + *from + " -> " + *to;
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

TEST(IncludeArrows, AreThoseOfTheTable) {
  std::map<std::string, std::set<std::string>> used;
  for (const auto& include : includesOfTree(VANTORIUM_SOURCE_DIR)) {
    if (const auto wrong = complaint(include)) ADD_FAILURE() << *wrong;
    const auto from = roomOfFile(include.file);
    const auto to = include.quoted ? roomOf(include.target) : std::nullopt;
    if (from && to && from != to) used[*from].insert(*to);
  }
  for (const auto& [room, below] : arrows)
    EXPECT_EQ(used[room], below) << "an arrow of " << room << " is drawn that no file needs: take it out";
}

TEST(IncludeArrows, NeverLeadInACircle) {
  std::function<bool(const std::string&, const std::string&)> leads = [&](const auto& from, const auto& to) {
    return std::ranges::any_of(arrows.at(from),
                               [&](const auto& next) { return next == to || leads(next, to); });
  };
  for (const auto& [room, below] : arrows) EXPECT_FALSE(leads(room, room)) << room;
}

TEST(IncludeArrows, AreFoundWhenTheyPointUpOrSideways) {
  EXPECT_EQ(complaintAbout("src/cache/file.hpp", "#include \"facade/client.hpp\""),
            "src/cache/file.hpp:2: facade/client.hpp is an arrow that is not drawn: cache -> facade");
  const std::array<std::array<const char*, 3>, 16> bad{{
      {"src/cache/file_store.cpp", "#include \"protocol/http_client.hpp\"", "cache -> protocol"},
      {"src/protocol/http_client.cpp", "#include \"device/reachability.hpp\"", "protocol -> device"},
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
