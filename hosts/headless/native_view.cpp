#include "hosts/headless/native_view.hpp"

#include <algorithm>
#include <map>

#include "hosts/headless/snapshot.hpp"
#include "hosts/headless/view_tree.hpp"
#include "platform/ui/window.hpp"

namespace vantorium::headless {

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

/// What a tap on the medium of a native ad hits: the button over all of it.
Refusal tapMedium(VantoriumNativeAdView& view) {
  const auto medium = view.outlets.mediaView.lock();
  if (!medium) return noControl(view, "mediaView");
  std::shared_ptr<ui::View> button;
  forEachView(*medium, [&](ui::View& each) {
    if (dynamic_cast<ui::Button*>(&each) != nullptr) button = each.shared_from_this();
  });
  return tapView(*button, "mediaView");
}

}  // namespace

void layOut(VantoriumNativeAdView& view) {
  const auto frames = places(view.bounds().size());
  for (const auto& outlet : view.subviews()) {
    const auto place = frames.find(outlet->outlet());
    if (place != frames.end()) outlet->setFrame(place->second);
  }
}

Refusal tapOutlet(VantoriumNativeAdView& view, const std::string& outlet) {
  return outlet == "mediaView" ? tapMedium(view) : tapControl(view, outlet);
}

nlohmann::json snapshotOfNativeView(VantoriumNativeAdView& view) {
  if (auto* const window = view.window()) window->layoutIfNeeded();
  view.layoutIfNeeded();
  return snapshotOf(view);
}

}  // namespace vantorium::headless
