// The pictures of native ads' records: what the records themselves need not know of.
#include <memory>
#include <optional>
#include <string>

#include <vantorium/native_ad.hpp>

#include "platform/ui/image.hpp"

namespace vantorium {

namespace {

using Picture = std::shared_ptr<const ui::Image>;

/// The picture at `path`, looked for once.
const Picture& lookOnce(std::optional<Picture>& kept, const std::optional<std::string>& path) {
  if (!kept) kept = path ? ui::Image::contentsOfFile(*path) : nullptr;
  return *kept;
}

}  // namespace

const Picture& VantoriumNativeAdAsset::image() const { return lookOnce(image_, filePath); }
const Picture& VantoriumNativeAd::appIconImage() const { return lookOnce(appIconImage_, appIconFilePath); }

}  // namespace vantorium
