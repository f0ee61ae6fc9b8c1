// What the application fills in: parameters and option objects.
#include <chrono>
#include <iterator>

#include "bindings/c/call.hpp"

using namespace vantorium;
using namespace vantorium::c;

namespace {

constexpr std::int64_t furthestDate =
    std::int64_t{290} * 365 * 24 * 60 * 60;  // seconds from 1970, either way

bool setParameter(vantorium_parameters* parameters, const char* key, const ParameterValue& value) {
  return perform([&] { object(parameters, "parameters")->insert_or_assign(text(key, "key"), value); });
}

template <typename Handle, typename Object, typename Value>
Value get(Handle* options, Value Object::*property) {
  return call(Value{}, [&] { return (*object(options, "options")).*property; });
}

template <typename Handle, typename Object, typename Value>
bool set(Handle* options, Value Object::*property, Value value) {
  return perform([&] { (*object(options, "options")).*property = value; });
}

template <typename Handle>
Handle* make() {
  return call<Handle*>(nullptr,
                       [] { return give<Handle>(std::make_shared<typename Handled<Handle>::Object>()); });
}

}  // namespace

vantorium_parameters* vantorium_parameters_new(void) { return make<vantorium_parameters>(); }

bool vantorium_parameters_set_text(vantorium_parameters* parameters, const char* key, const char* value) {
  return perform(
      [&] { object(parameters, "parameters")->insert_or_assign(text(key, "key"), text(value, "value")); });
}

bool vantorium_parameters_set_integer(vantorium_parameters* parameters, const char* key, int64_t value) {
  return setParameter(parameters, key, std::int64_t{value});
}

bool vantorium_parameters_set_number(vantorium_parameters* parameters, const char* key, double value) {
  return setParameter(parameters, key, value);
}

bool vantorium_parameters_set_flag(vantorium_parameters* parameters, const char* key, bool value) {
  return setParameter(parameters, key, value);
}

bool vantorium_parameters_set_date(vantorium_parameters* parameters, const char* key,
                                   int64_t seconds_since_1970) {
  return perform([&] {
    if (seconds_since_1970 < -furthestDate || seconds_since_1970 > furthestDate)
      refuse("\"seconds_since_1970\" is more than 290 years away. Give seconds, not milliseconds.");
    const std::chrono::system_clock::time_point date{std::chrono::seconds{seconds_since_1970}};
    object(parameters, "parameters")->insert_or_assign(text(key, "key"), date);
  });
}

bool vantorium_parameters_remove(vantorium_parameters* parameters, const char* key) {
  return perform([&] { object(parameters, "parameters")->erase(text(key, "key")); });
}

vantorium_native_ad_options* vantorium_native_ad_options_new(void) {
  return make<vantorium_native_ad_options>();
}

bool vantorium_native_ad_options_should_download_assets(vantorium_native_ad_options* options) {
  return get(options, &VantoriumNativeAdOptions::shouldDownloadAssets);
}

bool vantorium_native_ad_options_set_should_download_assets(vantorium_native_ad_options* options,
                                                            bool value) {
  return set(options, &VantoriumNativeAdOptions::shouldDownloadAssets, value);
}

int vantorium_native_ad_options_number_of_ads_to_precache(vantorium_native_ad_options* options) {
  return get(options, &VantoriumNativeAdOptions::numberOfAdsToPrecache);
}

bool vantorium_native_ad_options_set_number_of_ads_to_precache(vantorium_native_ad_options* options,
                                                               int value) {
  return set(options, &VantoriumNativeAdOptions::numberOfAdsToPrecache, value);
}

const char* vantorium_native_ad_options_creative_type(vantorium_native_ad_options* options) {
  return call<const char*>(nullptr, [&] { return object(options, "options")->creativeType.c_str(); });
}

bool vantorium_native_ad_options_set_creative_type(vantorium_native_ad_options* options, const char* value) {
  return perform([&] { object(options, "options")->creativeType = text(value, "value"); });
}

vantorium_media_view_options* vantorium_media_view_options_new(void) {
  return make<vantorium_media_view_options>();
}

bool vantorium_media_view_options_should_autoplay_video(vantorium_media_view_options* options) {
  return get(options, &VantoriumMediaViewOptions::shouldAutoplayVideo);
}

bool vantorium_media_view_options_set_should_autoplay_video(vantorium_media_view_options* options,
                                                            bool value) {
  return set(options, &VantoriumMediaViewOptions::shouldAutoplayVideo, value);
}

bool vantorium_media_view_options_should_loop_video(vantorium_media_view_options* options) {
  return get(options, &VantoriumMediaViewOptions::shouldLoopVideo);
}

bool vantorium_media_view_options_set_should_loop_video(vantorium_media_view_options* options, bool value) {
  return set(options, &VantoriumMediaViewOptions::shouldLoopVideo, value);
}

bool vantorium_media_view_options_should_mute_video(vantorium_media_view_options* options) {
  return get(options, &VantoriumMediaViewOptions::shouldMuteVideo);
}

bool vantorium_media_view_options_set_should_mute_video(vantorium_media_view_options* options, bool value) {
  return set(options, &VantoriumMediaViewOptions::shouldMuteVideo, value);
}

vantorium_server_parameter* vantorium_server_parameter_new(void) {
  return make<vantorium_server_parameter>();
}

const char* vantorium_server_parameter_get(vantorium_server_parameter* parameter, const char* key) {
  return call<const char*>(nullptr, [&]() -> const char* {
    const auto& parameters = object(parameter, "parameter")->parameters;
    const auto name = text(key, "key");
    if (!parameters) return nullptr;
    const auto found = parameters->find(name);
    return found == parameters->end() ? nullptr : found->second.c_str();
  });
}

size_t vantorium_server_parameter_count(vantorium_server_parameter* parameter) {
  return call(std::size_t{0}, [&] {
    const auto& parameters = object(parameter, "parameter")->parameters;
    return parameters ? parameters->size() : 0;
  });
}

const char* vantorium_server_parameter_key_at(vantorium_server_parameter* parameter, size_t index) {
  return call<const char*>(nullptr, [&] {
    const auto& parameters = object(parameter, "parameter")->parameters;
    if (!parameters || index >= parameters->size())
      refuse("\"index\" is too large. Give one below the count.");
    return std::next(parameters->begin(), static_cast<std::ptrdiff_t>(index))->first.c_str();
  });
}

bool vantorium_server_parameter_set(vantorium_server_parameter* parameter, const char* key,
                                    const char* value) {
  return perform([&] {
    auto& parameters = object(parameter, "parameter")->parameters;
    const auto name = text(key, "key");
    const auto given = textIfAny(value, "value");
    if (given) {
      if (!parameters) parameters.emplace();
      parameters->insert_or_assign(name, *given);
    } else if (parameters && parameters->erase(name) > 0 && parameters->empty()) {
      parameters.reset();
    }
  });
}
