#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "hosts/headless/scripted.hpp"
#include "native_ads/native_ad_view.hpp"

namespace vantorium::headless {

/// Places the outlets of a native ad view: the medium fills it, so that it is seen whenever some part of the
/// view is; the others lie over it, icon and texts at the top, button and privacy policy at the bottom.
void layOut(VantoriumNativeAdView& view);

/// Taps an outlet; "mediaView" stands for the button of its sound.
Refusal tapOutlet(VantoriumNativeAdView& view, const std::string& outlet);

/// The view as JSON, laid out as it is now.
nlohmann::json snapshotOfNativeView(VantoriumNativeAdView& view);

}  // namespace vantorium::headless
