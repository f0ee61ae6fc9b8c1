#include "platform/foundation/url.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>

#include "platform/foundation/ascii.hpp"
#include "platform/foundation/files.hpp"

namespace vantorium {

namespace {

constexpr std::string_view unreservedMarks = "-._~";
constexpr std::string_view subDelimiters = "!$&'()*+,;=";

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

int hexValue(char c) {
  if (isDigit(c)) return c - '0';
  const char low = asciiLowered(c);
  return low >= 'a' && low <= 'f' ? low - 'a' + 10 : -1;
}

bool startsEscape(std::string_view text, std::size_t at) {
  return text[at] == '%' && at + 2 < text.size() && hexValue(text[at + 1]) >= 0 &&
         hexValue(text[at + 2]) >= 0;
}

/// Whether every character is an escape, unreserved, a sub-delimiter or one of `more`.
bool consistsOf(std::string_view text, std::string_view more) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    const bool plain = isLetter(c) || isDigit(c) || unreservedMarks.find(c) != std::string_view::npos ||
                       subDelimiters.find(c) != std::string_view::npos ||
                       more.find(c) != std::string_view::npos;
    if (!plain && !startsEscape(text, at)) return false;
  }
  return true;
}

bool isScheme(std::string_view text) {
  return !text.empty() && isLetter(text.front()) && std::ranges::all_of(text, [](char c) {
    return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
  });
}

/// Cuts off and returns what stands before the first of `ends`, which stays.
std::string_view takeUntil(std::string_view& rest, std::string_view ends) {
  const std::string_view taken = rest.substr(0, rest.find_first_of(ends));
  rest.remove_prefix(taken.size());
  return taken;
}

/// The host of "userinfo@host:port", or none when that is malformed.
std::optional<std::string_view> hostOf(std::string_view authority) {
  if (const auto at = authority.rfind('@'); at != std::string_view::npos) {
    if (!consistsOf(authority.substr(0, at), ":")) return std::nullopt;
    authority.remove_prefix(at + 1);
  }
  std::string_view port = authority;
  std::string_view host;
  if (authority.starts_with('[')) {
    const auto end = authority.find(']');
    if (end == std::string_view::npos) return std::nullopt;
    host = authority.substr(1, end - 1);
    port = authority.substr(end + 1);
    if (host.empty() || !consistsOf(host, ":")) return std::nullopt;
  } else {
    host = takeUntil(port, ":");
    if (!consistsOf(host, "")) return std::nullopt;
  }
  if (!port.empty() && (port.front() != ':' || !std::ranges::all_of(port.substr(1), isDigit)))
    return std::nullopt;
  return host;
}

std::string percentEncoded(std::string_view text, std::string_view plain) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    if (isLetter(c) || isDigit(c) || plain.find(c) != std::string_view::npos) {
      result += c;
    } else {
      fmt::format_to(std::back_inserter(result), "%{:02X}", static_cast<unsigned char>(c));
    }
  }
  return result;
}

}  // namespace

std::optional<URL> URL::parse(std::string_view text) {
  if (text.empty()) return std::nullopt;
  URL url;
  url.text_ = text;
  std::string_view rest = text;
  if (const auto colon = text.find_first_of(":/?#"); colon != std::string_view::npos && text[colon] == ':') {
    if (!isScheme(text.substr(0, colon))) return std::nullopt;
    url.scheme_ = asciiLowered(std::string(text.substr(0, colon)));
    rest.remove_prefix(colon + 1);
  }
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    const auto host = hostOf(takeUntil(rest, "/?#"));
    if (!host) return std::nullopt;
    url.host_ = *host;
  }
  const std::string_view path = takeUntil(rest, "?#");
  const std::string_view query = takeUntil(rest, "#");
  const std::string_view fragment = rest.substr(std::min<std::size_t>(1, rest.size()));
  if (!consistsOf(path, ":@/") || !consistsOf(query, ":@/?") || !consistsOf(fragment, ":@/?"))
    return std::nullopt;
  url.path_ = percentDecoded(path);
  return url;
}

std::string URL::pathExtension() const {
  std::string_view name = path_;
  while (name.ends_with('/')) name.remove_suffix(1);
  name.remove_prefix(name.rfind('/') + 1);
  const auto dot = name.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? std::string() : std::string(name.substr(dot + 1));
}

std::optional<std::string> urlEncodedString(std::string_view text) {
  if (!isUTF8(text)) return std::nullopt;
  return percentEncoded(text, "!$&'()*+,-./:;=?@_~");
}

std::string percentDecoded(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (startsEscape(text, at)) {
      result += static_cast<char>(hexValue(text[at + 1]) * 16 + hexValue(text[at + 2]));
      at += 2;
    } else {
      result += text[at];
    }
  }
  return result;
}

std::optional<std::string> strictlyPercentDecoded(std::string_view text) {
  for (auto at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 1)) {
    if (!startsEscape(text, at)) return std::nullopt;
  }
  auto decoded = percentDecoded(text);
  return isUTF8(decoded) ? std::optional(std::move(decoded)) : std::nullopt;
}

std::string fileURL(std::string_view path) { return "file://" + percentEncoded(path, "!$&'()*+,-./:;=@_~"); }

std::string folderURL(std::string_view path) {
  std::string url = fileURL(path);
  if (!url.ends_with('/')) url += '/';
  return url;
}

std::string makeUUID() {
  std::random_device random;
  std::array<std::uint32_t, 4> words{};
  for (auto& word : words) word = random();
  words[1] = (words[1] & 0xFFFF0FFFU) | 0x4000U;      // version 4: random
  words[2] = (words[2] & 0x3FFFFFFFU) | 0x80000000U;  // the usual variant
  return fmt::format("{:08X}-{:04X}-{:04X}-{:04X}-{:04X}{:08X}", words[0], words[1] >> 16, words[1] & 0xFFFFU,
                     words[2] >> 16, words[2] & 0xFFFFU, words[3]);
}

}  // namespace vantorium
