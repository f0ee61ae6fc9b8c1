#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include <vantorium/native_ad.hpp>

namespace vantorium {

/// The record of one native ad that the service sent for the placement. Anything but a JSON object gives a
/// record of defaults.
std::shared_ptr<VantoriumNativeAd> makeNativeAd(const nlohmann::json& value, std::string placementID);

}  // namespace vantorium
