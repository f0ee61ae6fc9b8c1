#include "drive/native_view_layout.hpp"

#include <algorithm>
#include <map>
#include <string>

namespace vantorium::drive {

namespace {

constexpr double margin = 8, iconSide = 64, line = 20, buttonHeight = 44;  // points

/// Where an outlet goes in a view of this size. Nothing gets a negative size, however small the view.
std::map<std::string, ui::Rect> places(ui::Size view) {
  const double left = margin + iconSide + margin;
  const double beside = std::max(0.0, view.width - left - margin);
  const double across = std::max(0.0, view.width - 2 * margin);
  const double below = margin + iconSide + margin;
  const double bottom = std::max(0.0, view.height - margin - buttonHeight);
  return {
      {"mediaView", {0, 0, view.width, view.height}},
      {"imageView", {0, below + 3 * line, view.width, view.width * 9 / 16}},
      {"iconImageView", {margin, margin, iconSide, iconSide}},
      {"appNameLabel", {left, margin, beside, line}},
      {"appDeveloperLabel", {left, margin + line, beside, line}},
      {"ratingView", {left, margin + 2 * line, 5 * line, line}},
      {"reviewsLabel", {left + 5 * line + margin, margin + 2 * line, 3 * line, line}},
      {"appDescriptionLabel", {margin, below, across, 3 * line}},
      {"callToActionButton", {margin, bottom, std::max(0.0, across - line - margin), buttonHeight}},
      {"privacyPolicyImageView", {std::max(0.0, view.width - margin - line), bottom, line, line}},
  };
}

}  // namespace

void layOut(VantoriumNativeAdView& view) {
  const auto frames = places(view.bounds().size());
  for (const auto& outlet : view.subviews()) {
    const auto place = frames.find(outlet->outlet());
    if (place != frames.end()) outlet->setFrame(place->second);
  }
}

}  // namespace vantorium::drive
