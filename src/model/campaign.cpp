#include "model/campaign.hpp"

#include <nlohmann/json.hpp>

#include "model/fields.hpp"
#include "platform/foundation/url.hpp"

namespace vantorium {

using fields::listsOfStrings;
using fields::strings;
using fields::text;
using fields::wholeNumber;

Campaign::Campaign(const nlohmann::json& json)
    : identifier(makeUUID()),
      campaignID(text(json, "campaignId")),
      impressionID(text(json, "impressionId")),
      videoURL(text(json, "videoUrl")),
      trackingURL(text(json, "trackingUrl")),
      preparedTrackingURL(text(json, "preparedTrackingUrl")),
      trackingHash(text(json, "trackingHash")),
      endURL(strings(json, "endUrl")),
      hash(text(json, "hash")),
      playableAssetsURLs(strings(json, "playableAssetsUrls")),
      type(campaignType(text(json, "type"))),
      tag(text(json, "tag")),
      baseURL(text(json, "baseUrl")),
      rewardAmount(wholeNumber(json, "rewardAmount")),
      adUnitType(vantorium::adUnitType(text(json, "adUnitType"))),
      rewardMethod(vantorium::rewardMethod(text(json, "rewardMethod"))),
      endAssets(listsOfStrings(json, "endAssets")),
      storeAppID(text(json, "storeAppId")),
      customImage(text(json, "customImage")),
      orientation(campaignOrientation(text(json, "orientation"))),
      zippedURL(text(json, "zippedUrl")) {}

}  // namespace vantorium
