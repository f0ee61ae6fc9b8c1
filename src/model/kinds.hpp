#pragma once

#include <string>

/// The kinds that records tell apart, each read once, where its text enters. A `switch` over one has no
/// `default`, so that the compiler names every place that a new kind needs.
namespace vantorium {

/// How a campaign comes to the screen.
enum class CampaignType {
  video,     ///< a film, then perhaps an end card; whatever the service calls it
  playable,  ///< a page out of an archive
};
CampaignType campaignType(const std::string& text);
/// Whether it is a page that is played, and no film.
bool isPlayable(CampaignType type);

/// What a placement's ads are for.
enum class AdUnitType { other, rewardedVideo, videoInterstitial };
AdUnitType adUnitType(const std::string& text);

/// Who grants a campaign's reward.
enum class RewardMethod {
  other,   ///< not the SDK
  client,  ///< the SDK, once the service agrees
};
RewardMethod rewardMethod(const std::string& text);

/// Which way up a campaign wants to be shown; upper and lower case are the same.
enum class CampaignOrientation { any, portrait, landscape };
CampaignOrientation campaignOrientation(const std::string& text);

/// What a file of a native ad is. Its record is the application's, which may write the text: it is read when
/// a view is filled.
enum class AssetType { other, image, video };
AssetType assetType(const std::string& text);

}  // namespace vantorium
