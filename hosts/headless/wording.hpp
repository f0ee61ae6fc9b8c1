#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// Pieces of what refusals say to the author of a script.
namespace vantorium::headless {

/// What can be said, of a table of what the words mean.
template <typename Meaning>
std::vector<std::string> wordsOf(const std::map<std::string, Meaning>& meanings) {
  std::vector<std::string> words;
  words.reserve(meanings.size());
  for (const auto& [word, meaning] : meanings) words.push_back(word);
  return words;
}

/// The words, separated by commas.
std::string listed(const std::vector<std::string>& words);
/// The value as a piece of JSON of about so many bytes at most.
std::string brief(const nlohmann::json& value, std::size_t longest = 60);

}  // namespace vantorium::headless
