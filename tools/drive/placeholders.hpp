#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace vantorium::drive {

/// Puts placeholders in the place of what differs from run to run, so that two runs can be compared:
/// identifiers ("<id-1>", the same one for the same identifier), ports of addresses ("<port>"), the home
/// ("<home>") and times of day ("<time>"). One thread at a time.
class Placeholders {
 public:
  /// `home` is absolute.
  explicit Placeholders(const std::filesystem::path& home);
  ~Placeholders();

  /// The value with placeholders in all its texts.
  nlohmann::json replace(nlohmann::json value);

 private:
  std::string replaceText(const std::string& text);
  const std::string& identifier(const std::string& text);

  struct Pattern;
  const std::unique_ptr<Pattern> pattern_;
  std::vector<std::string> homes_;  ///< the spellings of the home, the longest first
  std::map<std::string, std::string> identifiers_;
};

}  // namespace vantorium::drive
