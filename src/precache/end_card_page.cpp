#include "precache/end_card_page.hpp"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string_view>

#include "platform/foundation/url.hpp"

namespace vantorium {

namespace {

/// Replaces every `what` in `text`; whether the text stays within bounds.
bool replaceAll(std::string& text, std::string_view what, std::string_view with) {
  // Unlike `find`, never quadratic, whatever text and URL the service sends.
  const std::boyer_moore_searcher searcher(what.begin(), what.end());
  std::string result;
  auto from = text.cbegin();
  for (auto at = std::search(from, text.cend(), searcher); at != text.cend();
       at = std::search(from, text.cend(), searcher)) {
    result.append(from, at).append(with);
    from = at + static_cast<std::ptrdiff_t>(what.size());
    if (result.size() > largestPage) return false;
  }
  result.append(from, text.cend());
  text = std::move(result);
  return text.size() <= largestPage;
}

}  // namespace

std::optional<std::string> pageWithRelativeAssets(std::string page, const std::vector<std::string>& assetURLs,
                                                  const std::string& customImage) {
  bool isSound = page.size() <= largestPage && replaceAll(page, "{{customImage}}", customImage);
  for (const std::string& asset : assetURLs) {
    if (!isSound) break;
    if (const auto url = URL::parse(asset)) isSound = replaceAll(page, asset, "." + url->path());
  }
  isSound = isSound && replaceAll(page, "./static", "..");
  return isSound ? std::optional(std::move(page)) : std::nullopt;
}

}  // namespace vantorium
