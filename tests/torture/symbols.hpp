#pragma once

#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace vantorium::torture {

/// Names of what addresses in this program point to, asked of addr2line all at once.
class Symbols {
 public:
  void want(std::span<void* const> frames);
  void resolve();
  /// The frames that are the SDK's or a host's, innermost first, each as "function (file:line)".
  std::vector<std::string> ownFrames(std::span<void* const> frames) const;

 private:
  std::set<std::size_t> wanted_;                           ///< offsets in the program's file
  std::map<std::size_t, std::vector<std::string>> names_;  ///< with those that were inlined, innermost first
};

}  // namespace vantorium::torture
