#include "sandbox/service/made_file.hpp"

#include <fmt/format.h>
#include <zlib.h>

#include <cstdint>
#include <random>
#include <string_view>

namespace vantorium::sandbox {
namespace {

std::uint64_t numberOf(std::string_view text) {  // FNV-1a: the same on every machine
  std::uint64_t number = 14695981039346656037U;
  for (const char each : text) number = (number ^ static_cast<unsigned char>(each)) * 1099511628211U;
  return number;
}

// 4 to 36 KiB, and one in sixteen above the size from which the SDK keeps a body in a file.
std::string film(const std::string& path) {
  std::mt19937_64 random(numberOf(path));
  const std::size_t size = random() % 16 == 0 ? 300U << 10U : (4U << 10U) + random() % (32U << 10U);
  std::string bytes = madeMark + path + "\n";
  while (bytes.size() < size) {
    std::uint64_t block = random();
    for (int at = 0; at < 8; ++at, block >>= 8U) bytes.push_back(static_cast<char>(block & 0xFFU));
  }
  return bytes;
}

// The mark is in a comment, so that the page is one wherever it is opened.
std::string page(const std::string& path) {
  return fmt::format("<!-- {}{}\n--><!doctype html><title>{}</title><a href=\"closead://\">Close</a>\n",
                     madeMark, path, path);
}

// One grey point; what follows the end of a picture is nobody's business.
std::string picture(const std::string& path) {
  using namespace std::string_view_literals;
  constexpr std::string_view point =
      "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1\x08\0\0\0\0\x3A\x7E\x9B\x55"
      "\0\0\0\nIDAT\x78\x9C\x63\x68\0\0\0\x82\0\x81\x77\xCD\x72\xB6"
      "\0\0\0\0IEND\xAE\x42\x60\x82"sv;
  return fmt::format("{}{}{}\n", point, madeMark, path);
}

void put(std::string& bytes, std::uint32_t number, int width) {
  for (int at = 0; at < width; ++at, number >>= 8U) bytes.push_back(static_cast<char>(number & 0xFFU));
}

// What both headers of a stored entry have: version, flags, method, time, date, checksum, both sizes, length
// of name.
void putEntry(std::string& bytes, const std::string& name, const std::string& content) {
  constexpr std::uint32_t firstOf1980 = 0x21;
  const auto size = static_cast<std::uint32_t>(content.size());
  const auto checksum = crc32(0, reinterpret_cast<const Bytef*>(content.data()), size);
  for (const std::uint32_t number : {20U, 0U, 0U, 0U, firstOf1980}) put(bytes, number, 2);
  for (const std::uint32_t number : {static_cast<std::uint32_t>(checksum), size, size}) put(bytes, number, 4);
  put(bytes, static_cast<std::uint32_t>(name.size()), 2);
}

// Three stored files, one of them in a folder of the folder.
std::string archive(const std::string& path) {
  std::string bytes;
  std::string directory;
  const std::string content = madeMark + path + "\n";
  std::uint32_t entries = 0;
  for (const std::string name : {"game/game.js", "game/game.css", "game/levels/first.js"}) {
    const auto offset = static_cast<std::uint32_t>(bytes.size());
    put(bytes, 0x04034B50, 4);
    putEntry(bytes, name, content);
    put(bytes, 0, 2);
    bytes += name + content;
    put(directory, 0x02014B50, 4);
    put(directory, 20, 2);
    putEntry(directory, name, content);
    directory.append(12, '\0');  // no extra field, no comment, first disk, no attributes
    put(directory, offset, 4);
    directory += name;
    ++entries;
  }
  const auto offset = static_cast<std::uint32_t>(bytes.size());
  bytes += directory;
  put(bytes, 0x06054B50, 4);
  put(bytes, 0, 4);
  put(bytes, entries, 2);
  put(bytes, entries, 2);
  put(bytes, static_cast<std::uint32_t>(directory.size()), 4);
  put(bytes, offset, 4);
  put(bytes, 0, 2);
  return bytes;
}

}  // namespace

std::optional<Answer> madeFile(const std::string& path) {
  if (!path.starts_with("/made/")) return std::nullopt;
  if (path.ends_with(".html")) return Answer{.contentType = "text/html; charset=utf-8", .body = {page(path)}};
  if (path.ends_with(".png")) return Answer{.contentType = "image/png", .body = {picture(path)}};
  if (path.ends_with(".zip")) return Answer{.contentType = "application/zip", .body = {archive(path)}};
  if (path.ends_with(".mp4")) return Answer{.contentType = "video/mp4", .body = {film(path)}};
  return Answer{.contentType = "text/plain; charset=utf-8", .body = {madeMark + path + "\n"}};
}

}  // namespace vantorium::sandbox
