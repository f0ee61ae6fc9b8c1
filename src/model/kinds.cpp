#include "model/kinds.hpp"

#include "platform/foundation/ascii.hpp"

namespace vantorium {

CampaignType campaignType(const std::string& text) {
  return text == "playable" ? CampaignType::playable : CampaignType::video;
}

bool isPlayable(CampaignType type) {
  switch (type) {
    case CampaignType::playable:
      return true;
    case CampaignType::video:
      return false;
  }
  return false;
}

AdUnitType adUnitType(const std::string& text) {
  if (text == "rewarded_video") return AdUnitType::rewardedVideo;
  return text == "video_interstitial" ? AdUnitType::videoInterstitial : AdUnitType::other;
}

RewardMethod rewardMethod(const std::string& text) {
  return text == "client" ? RewardMethod::client : RewardMethod::other;
}

CampaignOrientation campaignOrientation(const std::string& text) {
  const std::string lowered = asciiLowered(text);
  if (lowered == "portrait") return CampaignOrientation::portrait;
  return lowered == "landscape" ? CampaignOrientation::landscape : CampaignOrientation::any;
}

AssetType assetType(const std::string& text) {
  if (text == "image") return AssetType::image;
  return text == "video" ? AssetType::video : AssetType::other;
}

}  // namespace vantorium
