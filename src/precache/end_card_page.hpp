#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vantorium {

/// The largest page, in bytes, that is rewritten or made.
inline constexpr std::size_t largestPage = std::size_t{8} << 20U;

/// An end card's page that refers to local copies: every "{{customImage}}" becomes `customImage`, then every
/// URL of `assetURLs` the path of its copy. None when the page is larger than
/// `largestPage` or would become so. The time it takes is linear in the page for each URL.
std::optional<std::string> pageWithRelativeAssets(std::string page, const std::vector<std::string>& assetURLs,
                                                  const std::string& customImage);

}  // namespace vantorium
