#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vantorium {

/// What one rewardable popup offers, as the service describes it. A field that the service left out, or sent
/// with another type, has its default: empty text or an empty object. Never changes, so threads share it.
struct RewardableOffer {
  /// Takes what it knows from a JSON object; anything else gives a record of defaults.
  explicit RewardableOffer(const nlohmann::json& json);
  RewardableOffer(const RewardableOffer&) = delete;
  RewardableOffer& operator=(const RewardableOffer&) = delete;

  const std::string identifier;  ///< fresh for every record; names its page in the cache
  const std::string impressionID;
  const std::string trackingURL;  ///< where a click leads
  const nlohmann::json offer;     ///< an object: values for the template, by the names of its placeholders
};

}  // namespace vantorium
