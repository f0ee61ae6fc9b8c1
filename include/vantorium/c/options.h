#ifndef VANTORIUM_C_OPTIONS_H
#define VANTORIUM_C_OPTIONS_H

#include <vantorium/c/types.h>

/** @file
 *  What the application fills in and passes to a call. The objects are read inside the call and may be
 *  changed or given up afterwards. A setter returns false, and changes nothing, for a handle or text that
 *  is wrong. */

#ifdef __cplusplus
extern "C" {
#endif

/** No parameters yet. Known keys are `vantorium_user_id_key` and its like; others, and values of another
 *  type than the key's, are ignored by `vantorium_configure`. */
VANTORIUM_API vantorium_parameters* vantorium_parameters_new(void);
/** Sets a text, in place of what the key had. */
VANTORIUM_API bool vantorium_parameters_set_text(vantorium_parameters* parameters, const char* key,
                                                 const char* value);
/** Sets an integer, in place of what the key had. */
VANTORIUM_API bool vantorium_parameters_set_integer(vantorium_parameters* parameters, const char* key,
                                                    int64_t value);
/** Sets a number, in place of what the key had. */
VANTORIUM_API bool vantorium_parameters_set_number(vantorium_parameters* parameters, const char* key,
                                                   double value);
/** Sets a truth value, in place of what the key had. */
VANTORIUM_API bool vantorium_parameters_set_flag(vantorium_parameters* parameters, const char* key,
                                                 bool value);
/** Sets a moment in seconds since 1970 began in UTC, before it when negative, in place of what the key had.
 *  False for one more than 290 years away. */
VANTORIUM_API bool vantorium_parameters_set_date(vantorium_parameters* parameters, const char* key,
                                                 int64_t seconds_since_1970);
/** Takes the key away, if it is there. */
VANTORIUM_API bool vantorium_parameters_remove(vantorium_parameters* parameters, const char* key);

/** Options for `vantorium_precache_native_ads`: assets are downloaded, one ad, of creative type "both". */
VANTORIUM_API vantorium_native_ad_options* vantorium_native_ad_options_new(void);
/** Whether the icon, the pictures and the video of an ad are put on disk. */
VANTORIUM_API bool vantorium_native_ad_options_should_download_assets(vantorium_native_ad_options* options);
/** See above. */
VANTORIUM_API bool vantorium_native_ad_options_set_should_download_assets(
    vantorium_native_ad_options* options, bool value);
/** How many ads the service is asked for. */
VANTORIUM_API int vantorium_native_ad_options_number_of_ads_to_precache(vantorium_native_ad_options* options);
/** More than five is brought down to five, in this object too, when ads are precached with it. */
VANTORIUM_API bool vantorium_native_ad_options_set_number_of_ads_to_precache(
    vantorium_native_ad_options* options, int value);
/** Sent to the service as it stands. */
VANTORIUM_API const char* vantorium_native_ad_options_creative_type(vantorium_native_ad_options* options);
/** See above. */
VANTORIUM_API bool vantorium_native_ad_options_set_creative_type(vantorium_native_ad_options* options,
                                                                 const char* value);

/** Options for `vantorium_populate_native_ad_view`: the video starts by itself, loops, and is heard. */
VANTORIUM_API vantorium_media_view_options* vantorium_media_view_options_new(void);
/** Whether the video starts by itself once it is seen, and stops when it is not. */
VANTORIUM_API bool vantorium_media_view_options_should_autoplay_video(vantorium_media_view_options* options);
/** See above. */
VANTORIUM_API bool vantorium_media_view_options_set_should_autoplay_video(
    vantorium_media_view_options* options, bool value);
/** Whether the video starts again when it ends. The service hears of the end only of one that does. */
VANTORIUM_API bool vantorium_media_view_options_should_loop_video(vantorium_media_view_options* options);
/** See above. */
VANTORIUM_API bool vantorium_media_view_options_set_should_loop_video(vantorium_media_view_options* options,
                                                                      bool value);
/** Whether the video starts without sound. */
VANTORIUM_API bool vantorium_media_view_options_should_mute_video(vantorium_media_view_options* options);
/** See above. */
VANTORIUM_API bool vantorium_media_view_options_set_should_mute_video(vantorium_media_view_options* options,
                                                                      bool value);

/** No parameters yet. They travel with click reports. */
VANTORIUM_API vantorium_server_parameter* vantorium_server_parameter_new(void);
/** What was set for the key; null for nothing. */
VANTORIUM_API const char* vantorium_server_parameter_get(vantorium_server_parameter* parameter,
                                                         const char* key);
/** How many keys are set. */
VANTORIUM_API size_t vantorium_server_parameter_count(vantorium_server_parameter* parameter);
/** One of them, in the order of the alphabet, by index from 0 on; null on failure. */
VANTORIUM_API const char* vantorium_server_parameter_key_at(vantorium_server_parameter* parameter,
                                                            size_t index);
/** Sets the key, in place of what it had; a null value takes it away. */
VANTORIUM_API bool vantorium_server_parameter_set(vantorium_server_parameter* parameter, const char* key,
                                                  const char* value);

#ifdef __cplusplus
}
#endif

#endif
