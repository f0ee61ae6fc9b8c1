#include "native_ads/rating_view.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace vantorium {

using ui::LayoutAttribute;

std::shared_ptr<VantoriumRatingView> VantoriumRatingView::make(ui::Rect frame) {
  std::shared_ptr<VantoriumRatingView> view(new VantoriumRatingView(frame));
  view->prepareUI();
  return view;
}

void VantoriumRatingView::prepareUI() {
  for (int index = 0; index < numberOfStars; ++index) {
    const auto star = std::make_shared<ui::ImageView>();
    star->setClipsToBounds(true);
    star->setContentMode(ui::ContentMode::scaleAspectFit);
    addSubview(star);
    addConstraint({star, LayoutAttribute::top, weak_from_this(), LayoutAttribute::top});
    addConstraint({star, LayoutAttribute::bottom, weak_from_this(), LayoutAttribute::bottom});
    addConstraint({star, LayoutAttribute::width, weak_from_this(), LayoutAttribute::width, 0.2});
    if (imageViews_.empty()) {
      addConstraint({star, LayoutAttribute::leading, weak_from_this(), LayoutAttribute::leading});
    } else {
      addConstraint({star, LayoutAttribute::leading, imageViews_.back(), LayoutAttribute::trailing});
    }
    imageViews_.push_back(star);
  }
}

void VantoriumRatingView::setRating(double rating) {
  rating_ = rating;
  if (std::isnan(rating)) return;  // the stars stay as they are
  updateUI(rating);
  const double said = rating > 0 ? std::min(rating, 5.0) : 0.0;
  setAccessibilityLabel(fmt::format("Rated {:.3g} out of {}", said, numberOfStars));
}

void VantoriumRatingView::updateUI(double rating) {
  for (int number = 1; number <= numberOfStars; ++number) {
    ui::ImageView& star = *imageViews_[static_cast<std::size_t>(number - 1)];
    if (rating == 0 || number > rating) star.setImage(emptyStarImage);
    if (number <= rating) star.setImage(fullStarImage);
    if (number - 1 < rating && rating < number) star.setImage(halfFullStarImage);
  }
}

}  // namespace vantorium
