#pragma once

#include <webkit/webkit.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include <vantorium/error.hpp>

namespace vantorium::gtk {

/// Whether the folder holds no link that leads out of it. Reads the disk; any thread.
bool isSelfContained(const std::filesystem::path& folder);

/// The rules of a WebKit content filter that lets a page read files of the folder and none else; with an
/// empty folder, none at all.
std::string confinementRules(const std::string& folder);

/// Whether a "file:" URL names something in the folder. URLs of other schemes are not of concern: true.
bool mayNavigate(const std::string& url, const std::string& folder);

/// Compiles content filters. Main thread only.
class FilterCompiler {
 public:
  explicit FilterCompiler(const std::filesystem::path& folder);
  ~FilterCompiler();
  FilterCompiler(const FilterCompiler&) = delete;
  FilterCompiler& operator=(const FilterCompiler&) = delete;

  /// Later calls `completion` once with a filter for the rules (borrowed for the call), or null and the
  /// reason.
  using Completion = std::function<void(WebKitUserContentFilter* filter, const std::string& error)>;
  void compile(const std::string& rules, Completion completion);

 private:
  WebKitUserContentFilterStore* store_;
};

}  // namespace vantorium::gtk
