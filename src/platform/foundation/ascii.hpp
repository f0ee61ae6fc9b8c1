#pragma once

#include <algorithm>
#include <string>

namespace vantorium {

// <cctype> asks the locale, and takes an int. These leave every byte outside ASCII's letters alone.

constexpr char asciiLowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
constexpr char asciiUppered(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

inline std::string asciiLowered(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) { return asciiLowered(c); });
  return text;
}

inline std::string asciiUppered(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) { return asciiUppered(c); });
  return text;
}

}  // namespace vantorium
