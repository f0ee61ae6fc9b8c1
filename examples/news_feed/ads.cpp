#include "ads.hpp"

#include <glibmm.h>

#include <utility>

using vantorium::Error;
using vantorium::Vantorium;

namespace {

constexpr unsigned retryInterval = 60;  // seconds

std::string textOf(const std::optional<Error>& error) { return error ? error->localizedDescription() : ""; }

}  // namespace

void Ads::start(const std::string& appID, std::map<std::string, int> numberByPlacement) {
  appID_ = appID;
  missing_ = std::move(numberByPlacement);
  Vantorium::setDelegate(weak_from_this());  // held weakly: the application keeps this object
  Vantorium::setAutoCaching(false);          // it shows no interstitial and no rewarded ads
  configure();
}

// The delegate hears what came of it.
void Ads::configure() {
  Vantorium::configure(appID_, [](bool, const std::optional<Error>&) {});
}

void Ads::didConfigure() {
  timeline_.note("delegate", "didConfigure");
  for (const auto& [placement, number] : missing_) fetch(placement);
}

void Ads::didFailConfigure(const std::optional<Error>& error) {
  timeline_.note("delegate", "didFailConfigure", {{"error", textOf(error)}});
  later([](Ads& self) { self.configure(); });
}

/// Of all that are missing the SDK asks for five at most; `didFetch` comes back for the others.
void Ads::fetch(const std::string& placement) {
  const auto options = std::make_shared<vantorium::VantoriumNativeAdOptions>();
  options->numberOfAdsToPrecache = missing_.at(placement);
  Vantorium::precacheNativeAds(placement, options,
                               [weak = weak_from_this(), placement](const Vantorium::NativeAds& ads,
                                                                    const std::optional<Error>& error) {
                                 if (const auto self = weak.lock()) self->didFetch(placement, ads, error);
                               });
}

/// Ads beside an error lack some file on disk, which is loaded when they are shown.
void Ads::didFetch(const std::string& placement, const Vantorium::NativeAds& ads,
                   const std::optional<Error>& error) {
  timeline_.note("completion", "precacheNativeAds",
                 {{"placement", placement}, {"ads", std::to_string(ads.size())}, {"error", textOf(error)}});
  int& missing = missing_.at(placement);
  for (const auto& ad : ads) {
    if (missing == 0) break;
    --missing;
    if (onAd) onAd(ad);
  }
  if (missing == 0) return;
  if (ads.empty()) {
    later([placement](Ads& self) { self.fetch(placement); });
  } else {
    fetch(placement);
  }
}

void Ads::didReceiveClick(const std::string& placement) {
  timeline_.note("delegate", "didReceiveClick", {{"placement", placement}});
}

void Ads::later(std::function<void(Ads&)> action) {
  Glib::signal_timeout().connect_seconds_once(
      [weak = weak_from_this(), action = std::move(action)] {
        if (const auto self = weak.lock()) action(*self);
      },
      retryInterval);
}
