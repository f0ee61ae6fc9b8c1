// URLs that the service sends, and where the files behind them are put.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include "cache/confinement.hpp"
#include "cache/file_downloader.hpp"
#include "fuzz/check.hpp"
#include "platform/foundation/url.hpp"

namespace vantorium {
namespace {

/// Whether the path stays below `base` in the eyes of the file system.
bool isBelow(const std::string& path, const std::string& base) {
  return std::filesystem::path(path).lexically_normal().string().starts_with(base + "/");
}

void checkDestination(const std::string& source, const std::string& pathToRemove) {
  const std::string base = "/caches/campaign";
  static FileDownloader downloader(nullptr, nullptr);
  const auto destination = downloader.destinationURL(source, base, pathToRemove);
  if (!destination || checkConfined(*destination, base, source)) return;
  FUZZ_CHECK(isBelow(*destination, base));
  FUZZ_CHECK(isBelow(percentDecoded(*destination), base));
}

void checkURL(const std::string& text) {
  if (const auto url = URL::parse(text)) {
    FUZZ_CHECK(url->absoluteString() == text);
    FUZZ_CHECK(url->pathExtension().size() <= url->path().size());
    if (url->path().starts_with('/')) {
      const auto file = URL::parse(fileURL(url->path()));
      FUZZ_CHECK(file && file->path() == url->path());
    }
  }
  FUZZ_CHECK(percentDecoded(text).size() <= text.size());
  if (const auto encoded = urlEncodedString(text)) FUZZ_CHECK(percentDecoded(*encoded) == text);
}

}  // namespace
}  // namespace vantorium

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  vantorium::checkURL(text);
  // The first line is what is removed from the path, as long as there are two.
  const auto line = text.find('\n');
  vantorium::checkDestination(text, "");
  if (line != std::string::npos) vantorium::checkDestination(text.substr(line + 1), text.substr(0, line));
  return 0;
}
