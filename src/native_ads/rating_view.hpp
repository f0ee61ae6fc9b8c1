#pragma once

#include <memory>
#include <vector>

#include <vantorium/export.h>

#include "platform/ui/controls.hpp"
#include "platform/ui/view.hpp"

namespace vantorium {

/// A rating of 0 to 5 as a row of five stars, edge to edge, each as tall as the view. Main thread only.
class VANTORIUM_HOST_API VantoriumRatingView : public ui::View {
 public:
  static std::shared_ptr<VantoriumRatingView> make(ui::Rect frame = {});
  const char* className() const override { return "VantoriumRatingView"; }

  /// Null shows nothing. Setting one does not redraw: set `rating` afterwards.
  std::shared_ptr<const ui::Image> emptyStarImage = ui::Image::named("rating_empty");
  std::shared_ptr<const ui::Image> fullStarImage = ui::Image::named("rating_full");
  std::shared_ptr<const ui::Image> halfFullStarImage = ui::Image::named("rating_half_full");

  double rating() const { return rating_; }
  /// Nothing is rounded: any fraction shows as a half star. What is not a number leaves the stars as they
  /// are.
  void setRating(double rating);

 private:
  using View::View;
  void prepareUI();
  void updateUI(double rating);

  static constexpr int numberOfStars = 5;
  std::vector<std::shared_ptr<ui::ImageView>> imageViews_;  ///< left to right
  double rating_ = 0;
};

}  // namespace vantorium
