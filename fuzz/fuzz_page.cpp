// An end card's page and the URLs in it: both are the service's.
#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/check.hpp"
#include "platform/foundation/url.hpp"
#include "precache/end_card_page.hpp"

namespace {

/// The plain way to do it, which is too slow for hostile pages.
void replaceAll(std::string& text, const std::string& what, const std::string& with) {
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
    text.replace(at, what.size(), with);
}

std::string expected(std::string page, const std::vector<std::string>& urls, const std::string& customImage) {
  replaceAll(page, "{{customImage}}", customImage);
  for (const std::string& asset : urls)
    if (const auto url = vantorium::URL::parse(asset)) replaceAll(page, asset, "." + url->path());
  replaceAll(page, "./static", "..");
  return page;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider input(bytes, size);
  std::vector<std::string> urls(input.ConsumeIntegralInRange<std::size_t>(0, 8));
  for (std::string& url : urls) url = input.ConsumeRandomLengthString();
  const std::string customImage = input.ConsumeRandomLengthString();
  const std::string page = input.ConsumeRemainingBytesAsString();
  const auto local = vantorium::pageWithRelativeAssets(page, urls, customImage);
  if (local) {
    FUZZ_CHECK(local->size() <= vantorium::largestPage);
    FUZZ_CHECK(*local == expected(page, urls, customImage));
  }
  return 0;
}
