#pragma once

#include <memory>
#include <string>

#include "model/native_ad.hpp"
#include "native_ads/ad_services.hpp"
#include "platform/ui/controls.hpp"

namespace vantorium {

/// The picture of an asset whose file is on disk; null when that is no picture.
std::shared_ptr<const ui::Image> savedPicture(const VantoriumNativeAdAsset& asset);

/// Shows the image, or none, and gives up on whatever was still being loaded for the view. Main thread.
void showImage(ui::ImageView& view, std::shared_ptr<const ui::Image> image);

/// Clears the view, then shows the picture at the URL once it has arrived. Of several calls for a view only
/// the latest can set its image; the earlier ones are cancelled. What is not a URL, cannot be fetched or is
/// no picture leaves the view empty. Main thread.
void setImage(const std::shared_ptr<ui::ImageView>& view, const std::string& withURL,
              const AdServices& services);

}  // namespace vantorium
