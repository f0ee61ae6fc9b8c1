#include "drive/records.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <map>
#include <vector>

#include "drive/dates.hpp"

namespace vantorium::drive {

using nlohmann::json;

namespace {

json toJSON(const std::optional<std::string>& text) { return text ? json(*text) : json(nullptr); }

json toJSON(const VantoriumNativeAdAsset& asset) {
  return {{"URL", asset.URL},
          {"type", asset.type},
          {"size", {asset.size.width, asset.size.height}},
          {"filePath", toJSON(asset.filePath)},
          {"internalFilePath", toJSON(asset.internalFilePath)}};
}

/// One property of an option object.
bool readFlag(const std::string& name, const json& value) {
  if (!value.is_boolean())
    throw Refusal(fmt::format("options: \"{}\" cannot be {}. Expected true or false.", name, brief(value)));
  return value.get<bool>();
}

int readCount(const std::string& name, const json& value) {
  using Limits = std::numeric_limits<int>;
  const bool fits = value.is_number_integer() && value.get<double>() >= Limits::min() &&
                    value.get<double>() <= Limits::max();
  if (!fits)
    throw Refusal(fmt::format("options: \"{}\" cannot be {}. Expected a whole number.", name, brief(value)));
  return value.get<int>();
}

void readProperty(VantoriumNativeAdOptions& options, const std::string& name, const json& value) {
  if (name == "shouldDownloadAssets") {
    options.shouldDownloadAssets = readFlag(name, value);
  } else if (name == "numberOfAdsToPrecache") {
    options.numberOfAdsToPrecache = readCount(name, value);
  } else if (!value.is_string()) {
    throw Refusal(fmt::format("options: \"{}\" cannot be {}. Expected a text.", name, brief(value)));
  } else {
    options.creativeType = value.get<std::string>();
  }
}

void readProperty(VantoriumMediaViewOptions& options, const std::string& name, const json& value) {
  bool& property = name == "shouldAutoplayVideo" ? options.shouldAutoplayVideo
                   : name == "shouldLoopVideo"   ? options.shouldLoopVideo
                                                 : options.shouldMuteVideo;
  property = readFlag(name, value);
}

void readProperty(VantoriumServerParameter& options, const std::string& name, const json& value) {
  options.parameters.reset();
  if (value.is_null()) return;
  const auto isText = [](const json& each) { return each.is_string(); };
  if (!value.is_object() || !std::ranges::all_of(value, isText)) {
    throw Refusal(
        fmt::format("options: \"{}\" cannot be {}. Expected an object of texts.", name, brief(value)));
  }
  options.parameters = value.get<std::map<std::string, std::string>>();
}

const std::vector<std::string> nativeNames{"shouldDownloadAssets", "numberOfAdsToPrecache", "creativeType"};
const std::vector<std::string> mediaNames{"shouldAutoplayVideo", "shouldLoopVideo", "shouldMuteVideo"};
const std::vector<std::string> serverNames{"serverParameter"};

/// The options when each property is one of the class's; null otherwise.
template <typename Options>
std::shared_ptr<VantoriumAdOptions> readAs(const std::vector<std::string>& names, const json& value) {
  for (const auto& [name, each] : value.items()) {
    if (name != "name" && std::find(names.begin(), names.end(), name) == names.end()) return nullptr;
  }
  auto options = std::make_shared<Options>();
  for (const auto& [name, each] : value.items()) {
    if (name != "name") readProperty(*options, name, each);
  }
  return options;
}

}  // namespace

json toJSON(const std::optional<Error>& error) {
  if (!error) return nullptr;
  return {{"domain", error->domain()}, {"code", error->code()}, {"text", error->localizedDescription()}};
}

json toJSON(const VantoriumNativeAd& ad) {
  json assets = json::array();
  for (const auto& asset : ad.assets) assets.push_back(toJSON(*asset));
  return {{"adID", ad.adID},
          {"appName", ad.appName},
          {"storeAppID", ad.storeAppID},
          {"storeAppURL", ad.storeAppURL},
          {"rating", ad.rating},
          {"reviewsCount", ad.reviewsCount},
          {"categories", ad.categories},
          {"appDeveloper", ad.appDeveloper},
          {"appDescription", ad.appDescription},
          {"appIconURL", ad.appIconURL},
          {"trackingURL", ad.trackingURL},
          {"appIconFilePath", toJSON(ad.appIconFilePath)},
          {"assets", std::move(assets)},
          {"privacyPolicyURL", ad.privacyPolicyURL},
          {"privacyPolicyImageURL", ad.privacyPolicyImageURL},
          {"callToActionText", ad.callToActionText},
          {"impressionID", ad.impressionID},
          {"isImpressionReported", ad.isImpressionReported},
          {"isClickReported", ad.isClickReported},
          {"isVideoStartReported", ad.isVideoStartReported},
          {"isVideoEndReported", ad.isVideoEndReported},
          {"placementID", ad.placementID}};
}

json toJSON(const VantoriumAdOptions& options) {
  if (const auto* const native = dynamic_cast<const VantoriumNativeAdOptions*>(&options)) {
    return {{"shouldDownloadAssets", native->shouldDownloadAssets},
            {"numberOfAdsToPrecache", native->numberOfAdsToPrecache},
            {"creativeType", native->creativeType}};
  }
  if (const auto* const media = dynamic_cast<const VantoriumMediaViewOptions*>(&options)) {
    return {{"shouldAutoplayVideo", media->shouldAutoplayVideo},
            {"shouldLoopVideo", media->shouldLoopVideo},
            {"shouldMuteVideo", media->shouldMuteVideo}};
  }
  const auto* const server = dynamic_cast<const VantoriumServerParameter*>(&options);
  if (server == nullptr) return json::object();
  return {{"serverParameter", server->parameters ? json(*server->parameters) : json(nullptr)}};
}

std::shared_ptr<VantoriumAdOptions> readOptions(const json& value) {
  if (value.is_object()) {
    if (auto native = readAs<VantoriumNativeAdOptions>(nativeNames, value)) return native;
    if (auto media = readAs<VantoriumMediaViewOptions>(mediaNames, value)) return media;
    if (auto server = readAs<VantoriumServerParameter>(serverNames, value)) return server;
  }
  throw Refusal(
      fmt::format("options: {} are no options. Expected an object with some of {}; or of {}; or with {}.",
                  brief(value), listed(nativeNames), listed(mediaNames), listed(serverNames)));
}

std::optional<VantoriumServerParameter> readServerParameter(const Command& command) {
  auto parameters = command.textMapIfAny("serverParameter");
  if (!parameters) return std::nullopt;
  VantoriumServerParameter parameter;
  parameter.parameters = std::move(parameters);
  return parameter;
}

namespace {

ParameterValue readParameter(const Command& command, const json& value) {
  if (value.is_boolean()) return value.get<bool>();
  if (value.is_string()) return value.get<std::string>();
  const bool isLarge = value.is_number_unsigned() &&
                       value.get<std::uint64_t>() > std::uint64_t{std::numeric_limits<std::int64_t>::max()};
  if (value.is_number_integer() && !isLarge) return value.get<std::int64_t>();
  if (value.is_number()) return value.get<double>();
  if (value.is_object() && value.size() == 1 && value.contains("date") && value["date"].is_string()) {
    if (const auto date = parseDate(value["date"].get<std::string>())) return *date;
  }
  command.refuse("parameters",
                 R"(an object of texts, numbers, true, false and dates, written as {"date":"2018-12-31"})");
}

}  // namespace

std::optional<Parameters> readParameters(const Command& command) {
  const json* const value = command.find("parameters");
  if (value == nullptr || value->is_null()) return std::nullopt;
  if (!value->is_object()) command.refuse("parameters", "an object");
  Parameters parameters;
  for (const auto& [key, each] : value->items()) parameters[key] = readParameter(command, each);
  return parameters;
}

}  // namespace vantorium::drive
