#ifndef VANTORIUM_C_NATIVE_AD_H
#define VANTORIUM_C_NATIVE_AD_H

#include <vantorium/c/types.h>

/** @file
 *  Native ads and their media. Records may be kept and given up on any thread; they are read and written on
 *  the main thread only, the one that `vantorium_set_host` was called on. Elsewhere, as for a wrong handle,
 *  a getter returns null, 0 or false and a setter false. Indices count from 0; one that is too large is a
 *  failure. */

#ifdef __cplusplus
extern "C" {
#endif

/** The texts of a native ad. */
typedef int32_t vantorium_native_ad_text;
/** Its values. */
enum vantorium_native_ad_texts {
  VANTORIUM_NATIVE_AD_ID = 0,                        /**< `adID`: the service's name for the ad */
  VANTORIUM_NATIVE_AD_APP_NAME = 1,                  /**< `appName` of the advertised application */
  VANTORIUM_NATIVE_AD_STORE_APP_ID = 2,              /**< `storeAppID` */
  VANTORIUM_NATIVE_AD_STORE_APP_URL = 3,             /**< `storeAppURL`: its page in the store */
  VANTORIUM_NATIVE_AD_APP_DEVELOPER = 4,             /**< `appDeveloper` */
  VANTORIUM_NATIVE_AD_APP_DESCRIPTION = 5,           /**< `appDescription` */
  VANTORIUM_NATIVE_AD_APP_ICON_URL = 6,              /**< `appIconURL` */
  VANTORIUM_NATIVE_AD_APP_ICON_FILE_PATH = 7,        /**< `appIconFilePath`; null when it was not saved */
  VANTORIUM_NATIVE_AD_TRACKING_URL = 8,              /**< `trackingURL`: where the call to action leads */
  VANTORIUM_NATIVE_AD_PRIVACY_POLICY_URL = 9,        /**< `privacyPolicyURL` */
  VANTORIUM_NATIVE_AD_PRIVACY_POLICY_IMAGE_URL = 10, /**< `privacyPolicyImageURL` */
  VANTORIUM_NATIVE_AD_CALL_TO_ACTION_TEXT = 11,      /**< `callToActionText` */
  VANTORIUM_NATIVE_AD_IMPRESSION_ID = 12,            /**< `impressionID`, for the report calls */
  VANTORIUM_NATIVE_AD_PLACEMENT_ID = 13              /**< `placementID`: the ad was fetched for */
};

/** The marks that views make when they report; an application that reports by itself may use them likewise.
 */
typedef int32_t vantorium_native_ad_mark;
/** Its values. */
enum vantorium_native_ad_marks {
  VANTORIUM_NATIVE_AD_IMPRESSION_REPORTED = 0,  /**< `isImpressionReported` */
  VANTORIUM_NATIVE_AD_CLICK_REPORTED = 1,       /**< `isClickReported` */
  VANTORIUM_NATIVE_AD_VIDEO_START_REPORTED = 2, /**< `isVideoStartReported` */
  VANTORIUM_NATIVE_AD_VIDEO_END_REPORTED = 3    /**< `isVideoEndReported` */
};

/** An ad without any content, to be filled by the application. */
VANTORIUM_API vantorium_native_ad* vantorium_native_ad_new(void);
/** One of its texts. */
VANTORIUM_API const char* vantorium_native_ad_get_text(vantorium_native_ad* ad,
                                                       vantorium_native_ad_text text);
/** Sets one of its texts; only VANTORIUM_NATIVE_AD_APP_ICON_FILE_PATH may be null. */
VANTORIUM_API bool vantorium_native_ad_set_text(vantorium_native_ad* ad, vantorium_native_ad_text text,
                                                const char* value);
/** 0 to 5. */
VANTORIUM_API double vantorium_native_ad_rating(vantorium_native_ad* ad);
/** See above. */
VANTORIUM_API bool vantorium_native_ad_set_rating(vantorium_native_ad* ad, double value);
/** How many people rated it. */
VANTORIUM_API int64_t vantorium_native_ad_reviews_count(vantorium_native_ad* ad);
/** See above. */
VANTORIUM_API bool vantorium_native_ad_set_reviews_count(vantorium_native_ad* ad, int64_t value);
/** How many categories the application is in. */
VANTORIUM_API size_t vantorium_native_ad_categories_count(vantorium_native_ad* ad);
/** One of them; null on failure. */
VANTORIUM_API const char* vantorium_native_ad_category_at(vantorium_native_ad* ad, size_t index);
/** Adds one at the end. */
VANTORIUM_API bool vantorium_native_ad_add_category(vantorium_native_ad* ad, const char* category);
/** Takes all of them away. */
VANTORIUM_API bool vantorium_native_ad_remove_categories(vantorium_native_ad* ad);
/** How many pictures and videos it has. */
VANTORIUM_API size_t vantorium_native_ad_assets_count(vantorium_native_ad* ad);
/** One of them, as a reference of the caller's; null on failure. */
VANTORIUM_API vantorium_native_ad_asset* vantorium_native_ad_get_asset_at(vantorium_native_ad* ad,
                                                                          size_t index);
/** Adds one at the end; it is shared, not copied. */
VANTORIUM_API bool vantorium_native_ad_add_asset(vantorium_native_ad* ad, vantorium_native_ad_asset* asset);
/** Takes all of them away. */
VANTORIUM_API bool vantorium_native_ad_remove_assets(vantorium_native_ad* ad);
/** Whether the event was reported. */
VANTORIUM_API bool vantorium_native_ad_is_reported(vantorium_native_ad* ad, vantorium_native_ad_mark mark);
/** See above. */
VANTORIUM_API bool vantorium_native_ad_set_is_reported(vantorium_native_ad* ad, vantorium_native_ad_mark mark,
                                                       bool value);
/** Whether views would show the file at `appIconFilePath` (`appIconImage`): a PNG, JPEG, GIF or WebP of at
 *  most 32 MiB. Decided at the first call. */
VANTORIUM_API bool vantorium_native_ad_has_app_icon_image(vantorium_native_ad* ad);

/** An asset without any content, to be filled by the application. */
VANTORIUM_API vantorium_native_ad_asset* vantorium_native_ad_asset_new(void);
/** `URL`: where the service keeps the file. */
VANTORIUM_API const char* vantorium_native_ad_asset_url(vantorium_native_ad_asset* asset);
/** See above. */
VANTORIUM_API bool vantorium_native_ad_asset_set_url(vantorium_native_ad_asset* asset, const char* value);
/** "image" or "video"; views pass over anything else. */
VANTORIUM_API const char* vantorium_native_ad_asset_type(vantorium_native_ad_asset* asset);
/** See above. */
VANTORIUM_API bool vantorium_native_ad_asset_set_type(vantorium_native_ad_asset* asset, const char* value);
/** Pixels; 0 unless the service told width and height. */
VANTORIUM_API double vantorium_native_ad_asset_width(vantorium_native_ad_asset* asset);
/** As the width. */
VANTORIUM_API double vantorium_native_ad_asset_height(vantorium_native_ad_asset* asset);
/** Sets both. */
VANTORIUM_API bool vantorium_native_ad_asset_set_size(vantorium_native_ad_asset* asset, double width,
                                                      double height);
/** `filePath`: where precaching saved the file; null when it did not. The file is removed when the ad's last
 *  reference goes: an asset alone does not keep it. */
VANTORIUM_API const char* vantorium_native_ad_asset_file_path(vantorium_native_ad_asset* asset);
/** See above; null for none. */
VANTORIUM_API bool vantorium_native_ad_asset_set_file_path(vantorium_native_ad_asset* asset,
                                                           const char* value);
/** `internalFilePath`: the same path. */
VANTORIUM_API const char* vantorium_native_ad_asset_internal_file_path(vantorium_native_ad_asset* asset);
/** See above; null for none. */
VANTORIUM_API bool vantorium_native_ad_asset_set_internal_file_path(vantorium_native_ad_asset* asset,
                                                                    const char* value);
/** Whether views would show the file at `filePath` (`image`), as `vantorium_native_ad_has_app_icon_image`. */
VANTORIUM_API bool vantorium_native_ad_asset_has_image(vantorium_native_ad_asset* asset);

#ifdef __cplusplus
}
#endif

#endif
