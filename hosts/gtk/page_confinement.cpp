#include "hosts/gtk/page_confinement.hpp"

#include <memory>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/foundation/url.hpp"

namespace vantorium::gtk {

namespace fs = std::filesystem;

namespace {

// WebKit compares the pattern with the URL as it is requested, percent-encoded.
std::string folderPattern(const std::string& folder) { return folder.empty() ? folder : folderURL(folder); }

std::string escapedForPattern(std::string_view text) {
  constexpr std::string_view special = R"(.+*?()[]{}^$|\)";
  std::string escaped;
  for (const char c : text) {
    if (special.find(c) != std::string_view::npos) escaped += '\\';
    escaped += c;
  }
  return escaped;
}

nlohmann::json rule(const std::string& pattern, const char* action) {
  return {{"trigger", {{"url-filter", pattern}, {"url-filter-is-case-sensitive", true}}},
          {"action", {{"type", action}}}};
}

bool leadsOut(const fs::path& link, const fs::path& folder) {
  std::error_code error;
  const fs::path target = fs::canonical(link, error);
  if (error) return false;  // leads nowhere
  const auto relative = target.lexically_relative(folder);
  return relative.empty() || *relative.begin() == "..";
}

struct Compilation {
  std::string identifier;
  FilterCompiler::Completion completion;
};

void compiled(GObject* object, GAsyncResult* result, gpointer data) {
  auto* const store = WEBKIT_USER_CONTENT_FILTER_STORE(object);
  const std::unique_ptr<Compilation> compilation(static_cast<Compilation*>(data));
  GError* error = nullptr;
  WebKitUserContentFilter* const filter = webkit_user_content_filter_store_save_finish(store, result, &error);
  // The filter stays mapped; its file has done its work.
  webkit_user_content_filter_store_remove(
      store, compilation->identifier.c_str(), nullptr, [](GObject*, GAsyncResult*, gpointer) {}, nullptr);
  compilation->completion(filter, error != nullptr ? error->message : "");
  if (filter != nullptr) webkit_user_content_filter_unref(filter);
  g_clear_error(&error);
}

}  // namespace

bool isSelfContained(const fs::path& folder) {
  std::error_code error;
  const fs::path root = fs::canonical(folder, error);
  if (error) return true;  // there is nothing to read
  for (fs::recursive_directory_iterator entry(root, error), end; !error && entry != end;
       entry.increment(error)) {
    if (entry->is_symlink(error) && leadsOut(entry->path(), root)) return false;
  }
  return !error;  // what could not be looked at is not trusted
}

std::string confinementRules(const std::string& folder) {
  nlohmann::json rules = nlohmann::json::array();
  rules.push_back(rule("^[Ff][Ii][Ll][Ee]:", "block"));
  if (const std::string url = folderPattern(folder); !url.empty()) {
    rules.push_back(rule("^" + escapedForPattern(url), "ignore-previous-rules"));
    // An encoded slash is none to the URL parser, which leaves ".." before it alone, but is one to the file
    // system.
    rules.push_back(rule("^file:.*%2[Ff]", "block"));
  }
  return rules.dump();
}

bool mayNavigate(const std::string& url, const std::string& folder) {
  if (g_ascii_strncasecmp(url.c_str(), "file:", 5) != 0) return true;
  const auto path = url.substr(0, url.find_first_of("?#"));
  const std::string base = folderPattern(folder);
  const bool hasEncodedSlash = path.find("%2F") != std::string::npos || path.find("%2f") != std::string::npos;
  return !base.empty() && !hasEncodedSlash && path.compare(0, base.size(), base) == 0;
}

FilterCompiler::FilterCompiler(const fs::path& folder)
    : store_(webkit_user_content_filter_store_new(folder.c_str())) {}

FilterCompiler::~FilterCompiler() { g_object_unref(store_); }

void FilterCompiler::compile(const std::string& rules, Completion completion) {
  // Of its own name: two processes of one application share the folder.
  auto* const compilation = new Compilation{makeUUID(), std::move(completion)};
  GBytes* const source = g_bytes_new(rules.data(), rules.size());
  webkit_user_content_filter_store_save(store_, compilation->identifier.c_str(), source, nullptr, compiled,
                                        compilation);
  g_bytes_unref(source);
}

}  // namespace vantorium::gtk
