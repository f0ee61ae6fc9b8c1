#include "model/rewardable_offer.hpp"

#include "model/json.hpp"
#include "platform/foundation/url.hpp"

namespace vantorium {

namespace {

nlohmann::json objectOf(const nlohmann::json& json, const char* key) {
  const auto found = json.is_object() ? json.find(key) : json.end();
  return found != json.end() && found->is_object() ? *found : nlohmann::json::object();
}

}  // namespace

RewardableOffer::RewardableOffer(const nlohmann::json& json)
    : identifier(makeUUID()),
      impressionID(stringValue(json, "impressionId").value_or("")),
      trackingURL(stringValue(json, "trackingUrl").value_or("")),
      offer(objectOf(json, "offer")) {}

}  // namespace vantorium
