#include "native_ads/rating_view.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace vantorium {
namespace {

/// A letter for each star: full, half, empty, or "-" for no image.
std::string starsOf(const VantoriumRatingView& view) {
  std::string stars;
  for (const auto& subview : view.subviews()) {
    const auto image = std::static_pointer_cast<ui::ImageView>(subview)->image();
    stars += !image                            ? '-'
             : image->name() == "rating_full"  ? 'f'
             : image->name() == "rating_empty" ? 'e'
                                               : 'h';
  }
  return stars;
}

TEST(RatingView, RoundsNothing) {
  const auto view = VantoriumRatingView::make();
  EXPECT_EQ(starsOf(*view), "-----");
  const std::vector<std::pair<double, std::string>> ratings{
      {0, "eeeee"},   {0.0001, "heeee"},
      {3, "fffee"},   {3.0001, "fffhe"},
      {3.9, "fffhe"}, {4.99, "ffffh"},
      {5, "fffff"},   {7, "fffff"},
      {-2, "eeeee"},  {std::numeric_limits<double>::infinity(), "fffff"}};
  for (const auto& [rating, stars] : ratings) {
    view->setRating(rating);
    EXPECT_EQ(starsOf(*view), stars) << rating;
  }
  view->setRating(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(starsOf(*view), "fffff") << "what is not a number changes nothing";
}

TEST(RatingView, LaysItsStarsEdgeToEdge) {
  const auto view = VantoriumRatingView::make({10, 10, 100, 18});
  view->layoutIfNeeded();
  for (std::size_t index = 0; index < 5; ++index) {
    EXPECT_EQ(view->subviews().at(index)->frame(), (ui::Rect{20.0 * static_cast<double>(index), 0, 20, 18}));
  }
}

TEST(RatingView, ShowsTheApplicationsOwnStars) {
  const auto view = VantoriumRatingView::make();
  view->setRating(2.5);
  view->fullStarImage = nullptr;
  EXPECT_EQ(starsOf(*view), "ffhee") << "not before it is redrawn";
  view->setRating(2.5);
  EXPECT_EQ(starsOf(*view), "--hee");
  EXPECT_EQ(view->accessibilityLabel(), "Rated 2.5 out of 5");
}

}  // namespace
}  // namespace vantorium
