#include "native_ads/image_loading.hpp"

#include <utility>

#include "platform/foundation/url.hpp"

namespace vantorium {

std::shared_ptr<const ui::Image> savedPicture(const VantoriumNativeAdAsset& asset) {
  // Somebody may have asked for the record's own image before its file was there.
  return asset.image() ? asset.image() : ui::Image::contentsOfFile(*asset.filePath);
}

void showImage(ui::ImageView& view, std::shared_ptr<const ui::Image> image) {
  view.setImageTask(nullptr);
  view.setImage(std::move(image));
}

void setImage(const std::shared_ptr<ui::ImageView>& view, const std::string& withURL,
              const AdServices& services) {
  showImage(*view, nullptr);
  const auto context = services.context.lock();
  const auto downloads = services.downloads.lock();
  if (!context || !downloads || !URL::parse(withURL)) return;
  // The view holds it for as long as the picture is the one it waits for.
  struct Load {
    std::shared_ptr<void> task;
  };
  const auto load = std::make_shared<Load>();
  load->task = downloads->downloadData(
      withURL, ui::Image::largestFile,
      [context, withURL, weakView = std::weak_ptr(view), weakLoad = std::weak_ptr(load)](Result<Data> data) {
        if (!data) return;
        context->onMain([image = ui::Image::fromData(std::move(*data), withURL), weakView, weakLoad] {
          const auto shown = weakView.lock();
          if (shown && !weakLoad.expired()) shown->setImage(image);
        });
      });
  view->setImageTask(load);
}

}  // namespace vantorium
