#pragma once

#include <atomic>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "model/kinds.hpp"

namespace vantorium {

/// One full-screen ad as the service describes it. A field that the service left out, or sent with another
/// type, has its default: empty text, an empty list or zero. Shared between threads: all but the one flag
/// never changes.
struct Campaign {
  /// Takes what it knows from a JSON object; anything else gives a record of defaults.
  explicit Campaign(const nlohmann::json& json);
  Campaign(const Campaign&) = delete;
  Campaign& operator=(const Campaign&) = delete;

  const std::string identifier;  ///< fresh for every record; names its files in the cache
  const std::string campaignID;
  const std::string impressionID;
  const std::string videoURL;
  const std::string trackingURL;
  const std::string preparedTrackingURL;  ///< where a click leads
  const std::string trackingHash;
  const std::vector<std::string> endURL;  ///< the end card's page comes first
  const std::string hash;                 ///< of the film: equal hashes share it
  const std::vector<std::string> playableAssetsURLs;
  const CampaignType type;
  const std::string tag;
  const std::string baseURL;
  const std::int64_t rewardAmount;
  const AdUnitType adUnitType;
  const RewardMethod rewardMethod;
  const std::vector<std::vector<std::string>> endAssets;
  const std::string storeAppID;
  const std::string customImage;
  const CampaignOrientation orientation;
  const std::string zippedURL;

  std::atomic<bool> isRewarded{false};  ///< its reward has been asked for
};

}  // namespace vantorium
