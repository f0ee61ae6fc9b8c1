#pragma once

#include "native_ads/native_ad_view.hpp"

namespace vantorium::drive {

/// Places the outlets of a native ad view: the medium fills it, so that it is seen whenever some part of the
/// view is; the others lie over it, icon and texts at the top, button and privacy policy at the bottom.
void layOut(VantoriumNativeAdView& view);

}  // namespace vantorium::drive
