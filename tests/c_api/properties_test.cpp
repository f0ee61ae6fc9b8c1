// Every property of the C API stands for the one of its name.
#include "bindings/c/handles.hpp"
#include "c_api/c_world.hpp"

namespace vantorium::testing {
namespace {

TEST(CProperties, OfOptionsAreWrittenAndReadBack) {
  const auto native = std::make_shared<VantoriumNativeAdOptions>();
  const Owned<vantorium_native_ad_options> options(c::give<vantorium_native_ad_options>(native));
  EXPECT_TRUE(vantorium_native_ad_options_should_download_assets(options));
  EXPECT_TRUE(vantorium_native_ad_options_set_should_download_assets(options, false));
  EXPECT_TRUE(vantorium_native_ad_options_set_number_of_ads_to_precache(options, -3));
  EXPECT_TRUE(vantorium_native_ad_options_set_creative_type(options, "image"));
  EXPECT_FALSE(native->shouldDownloadAssets);
  EXPECT_EQ(native->numberOfAdsToPrecache, -3);
  EXPECT_EQ(native->creativeType, "image");
  EXPECT_FALSE(vantorium_native_ad_options_should_download_assets(options));
  EXPECT_EQ(vantorium_native_ad_options_number_of_ads_to_precache(options), -3);

  const auto video = std::make_shared<VantoriumMediaViewOptions>();
  const Owned<vantorium_media_view_options> media(c::give<vantorium_media_view_options>(video));
  EXPECT_TRUE(vantorium_media_view_options_should_loop_video(media));
  EXPECT_TRUE(vantorium_media_view_options_set_should_loop_video(media, false));
  EXPECT_TRUE(!video->shouldLoopVideo && video->shouldAutoplayVideo && !video->shouldMuteVideo);
  EXPECT_FALSE(vantorium_media_view_options_should_mute_video(media));
  EXPECT_TRUE(vantorium_media_view_options_set_should_mute_video(media, true));
  EXPECT_TRUE(vantorium_media_view_options_set_should_autoplay_video(media, false));
  EXPECT_TRUE(!video->shouldAutoplayVideo && video->shouldMuteVideo);

  const auto parameter = std::make_shared<VantoriumServerParameter>();
  const Owned<vantorium_server_parameter> server(c::give<vantorium_server_parameter>(parameter));
  EXPECT_EQ(vantorium_server_parameter_count(server), 0U);
  vantorium_server_parameter_set(server, "b", "2");
  vantorium_server_parameter_set(server, "a", "1");
  EXPECT_STREQ(vantorium_server_parameter_key_at(server, 0), "a");
  EXPECT_EQ(vantorium_server_parameter_key_at(server, 2), nullptr);
  EXPECT_EQ(parameter->parameters, (std::map<std::string, std::string>{{"a", "1"}, {"b", "2"}}));
  vantorium_server_parameter_set(server, "a", nullptr);
  vantorium_server_parameter_set(server, "b", nullptr);
  EXPECT_EQ(parameter->parameters, std::nullopt);
}

TEST(CProperties, OfParametersKeepTheirTypes) {
  const auto parameters = std::make_shared<Parameters>();
  const Owned<vantorium_parameters> handle(c::give<vantorium_parameters>(parameters));
  EXPECT_TRUE(vantorium_parameters_set_text(handle, vantorium_gender_key(), "f"));
  EXPECT_TRUE(vantorium_parameters_set_integer(handle, vantorium_age_key(), 30));
  EXPECT_TRUE(vantorium_parameters_set_number(handle, "number", 0.5));
  EXPECT_TRUE(vantorium_parameters_set_flag(handle, "flag", true));
  EXPECT_TRUE(vantorium_parameters_set_date(handle, vantorium_date_of_birthday_key(), 86400));
  EXPECT_TRUE(vantorium_parameters_set_text(handle, "gone", "x"));
  EXPECT_TRUE(vantorium_parameters_remove(handle, "gone"));
  EXPECT_TRUE(vantorium_parameters_remove(handle, "never there"));
  const std::chrono::system_clock::time_point secondDay{std::chrono::hours{24}};
  EXPECT_EQ(*parameters, (Parameters{{"gender", "f"},
                                     {"age", std::int64_t{30}},
                                     {"number", 0.5},
                                     {"flag", true},
                                     {"dateOfBirth", secondDay}}));
}

TEST(CProperties, OfRecordsAreThoseOfTheSDK) {
  const auto ad = std::make_shared<VantoriumNativeAd>();
  const Owned<vantorium_native_ad> handle(c::give<vantorium_native_ad>(ad));
  const std::vector<std::pair<vantorium_native_ad_text, std::string VantoriumNativeAd::*>> texts{
      {VANTORIUM_NATIVE_AD_ID, &VantoriumNativeAd::adID},
      {VANTORIUM_NATIVE_AD_APP_NAME, &VantoriumNativeAd::appName},
      {VANTORIUM_NATIVE_AD_STORE_APP_ID, &VantoriumNativeAd::storeAppID},
      {VANTORIUM_NATIVE_AD_STORE_APP_URL, &VantoriumNativeAd::storeAppURL},
      {VANTORIUM_NATIVE_AD_APP_DEVELOPER, &VantoriumNativeAd::appDeveloper},
      {VANTORIUM_NATIVE_AD_APP_DESCRIPTION, &VantoriumNativeAd::appDescription},
      {VANTORIUM_NATIVE_AD_APP_ICON_URL, &VantoriumNativeAd::appIconURL},
      {VANTORIUM_NATIVE_AD_TRACKING_URL, &VantoriumNativeAd::trackingURL},
      {VANTORIUM_NATIVE_AD_PRIVACY_POLICY_URL, &VantoriumNativeAd::privacyPolicyURL},
      {VANTORIUM_NATIVE_AD_PRIVACY_POLICY_IMAGE_URL, &VantoriumNativeAd::privacyPolicyImageURL},
      {VANTORIUM_NATIVE_AD_CALL_TO_ACTION_TEXT, &VantoriumNativeAd::callToActionText},
      {VANTORIUM_NATIVE_AD_IMPRESSION_ID, &VantoriumNativeAd::impressionID},
      {VANTORIUM_NATIVE_AD_PLACEMENT_ID, &VantoriumNativeAd::placementID},
  };
  for (const auto& [text, property] : texts) {
    const std::string value = "value " + std::to_string(text);
    EXPECT_TRUE(vantorium_native_ad_set_text(handle, text, value.c_str()));
    EXPECT_EQ((*ad).*property, value);
    EXPECT_EQ(vantorium_native_ad_get_text(handle, text), value);
  }
  EXPECT_TRUE(vantorium_native_ad_set_text(handle, VANTORIUM_NATIVE_AD_APP_ICON_FILE_PATH, "/icon"));
  EXPECT_EQ(ad->appIconFilePath, "/icon");
  const std::vector<std::pair<vantorium_native_ad_mark, bool VantoriumNativeAd::*>> marks{
      {VANTORIUM_NATIVE_AD_IMPRESSION_REPORTED, &VantoriumNativeAd::isImpressionReported},
      {VANTORIUM_NATIVE_AD_CLICK_REPORTED, &VantoriumNativeAd::isClickReported},
      {VANTORIUM_NATIVE_AD_VIDEO_START_REPORTED, &VantoriumNativeAd::isVideoStartReported},
      {VANTORIUM_NATIVE_AD_VIDEO_END_REPORTED, &VantoriumNativeAd::isVideoEndReported},
  };
  for (const auto& [mark, property] : marks) {
    EXPECT_FALSE(vantorium_native_ad_is_reported(handle, mark));
    EXPECT_TRUE(vantorium_native_ad_set_is_reported(handle, mark, true));
    EXPECT_TRUE((*ad).*property);
  }
  EXPECT_TRUE(vantorium_native_ad_set_reviews_count(handle, INT64_MAX));
  EXPECT_EQ(vantorium_native_ad_reviews_count(handle), INT64_MAX);
  vantorium_native_ad_add_category(handle, "Games");
  EXPECT_TRUE(vantorium_native_ad_remove_categories(handle));
  EXPECT_EQ(vantorium_native_ad_categories_count(handle), 0U);
  EXPECT_FALSE(vantorium_native_ad_has_app_icon_image(handle));

  const auto asset = std::make_shared<VantoriumNativeAdAsset>();
  const Owned<vantorium_native_ad_asset> file(c::give<vantorium_native_ad_asset>(asset));
  EXPECT_TRUE(vantorium_native_ad_asset_set_url(file, "u"));
  EXPECT_TRUE(vantorium_native_ad_asset_set_type(file, "t"));
  EXPECT_TRUE(vantorium_native_ad_asset_set_size(file, 3, 4));
  EXPECT_TRUE(vantorium_native_ad_asset_set_file_path(file, "f"));
  EXPECT_TRUE(vantorium_native_ad_asset_set_internal_file_path(file, "i"));
  EXPECT_EQ(asset->URL + asset->type + *asset->filePath + *asset->internalFilePath, "utfi");
  EXPECT_EQ(asset->size, (VantoriumNativeAdAsset::Size{3, 4}));
  EXPECT_EQ(vantorium_native_ad_asset_url(file) + std::string(vantorium_native_ad_asset_file_path(file)) +
                vantorium_native_ad_asset_internal_file_path(file),
            "ufi");
  EXPECT_EQ(vantorium_native_ad_asset_width(file) - vantorium_native_ad_asset_height(file), -1);
  EXPECT_FALSE(vantorium_native_ad_asset_has_image(file));
  vantorium_native_ad_add_asset(handle, file);
  EXPECT_TRUE(vantorium_native_ad_remove_assets(handle));
  EXPECT_TRUE(ad->assets.empty());
}

TEST(CProperties, OfTheSDKMayBeWritten) {
  const CWorld world;
  const auto flags = [] {
    return std::to_string(vantorium_is_configured()) + std::to_string(vantorium_is_configuring()) +
           std::to_string(vantorium_is_showing_ads()) + std::to_string(vantorium_auto_caching());
  };
  EXPECT_EQ(flags(), "0000");
  vantorium_set_is_configured(true);
  EXPECT_EQ(flags(), "1000");
  vantorium_set_is_configuring(true);
  EXPECT_EQ(flags(), "1100");
  vantorium_set_is_showing_ads(true);
  EXPECT_EQ(flags(), "1110");
  vantorium_set_auto_caching(true);
  EXPECT_EQ(flags(), "1111");
}

}  // namespace
}  // namespace vantorium::testing
