#include "native_ads/native_ad_view.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

#include "model/kinds.hpp"
#include "native_ads/image_loading.hpp"
#include "platform/foundation/url.hpp"

namespace vantorium {

namespace {

using Outlets = VantoriumNativeAdView::Outlets;
using OutletMaker = std::function<std::shared_ptr<ui::View>(Outlets& outlets, Host& host)>;

template <typename Class>
OutletMaker plain(std::weak_ptr<Class> Outlets::*outlet) {
  return [outlet](Outlets& outlets, Host&) {
    auto view = std::make_shared<Class>();
    outlets.*outlet = view;
    return view;
  };
}

const std::map<std::string, OutletMaker>& outletMakers() {
  static const std::map<std::string, OutletMaker> makers{
      {"iconImageView", plain(&Outlets::iconImageView)},
      {"appNameLabel", plain(&Outlets::appNameLabel)},
      {"appDeveloperLabel", plain(&Outlets::appDeveloperLabel)},
      {"appDescriptionLabel", plain(&Outlets::appDescriptionLabel)},
      {"reviewsLabel", plain(&Outlets::reviewsLabel)},
      {"callToActionButton", plain(&Outlets::callToActionButton)},
      {"imageView", plain(&Outlets::imageView)},
      {"mediaView",
       [](Outlets& outlets, Host& host) {
         auto view = VantoriumMediaView::make(host);
         outlets.mediaView = view;
         return view;
       }},
      {"ratingView",
       [](Outlets& outlets, Host&) {
         auto view = VantoriumRatingView::make();
         outlets.ratingView = view;
         return view;
       }},
      {"privacyPolicyImageView", plain(&Outlets::privacyPolicyImageView)},
  };
  return makers;
}

void setText(const std::weak_ptr<ui::Label>& outlet, const std::string& text) {
  if (const auto label = outlet.lock()) label->setText(text);
}

/// What assistive technology says of a picture of the advertised application.
std::string pictureLabel(const char* what, const VantoriumNativeAd& ad) {
  return ad.appName.empty() ? what : fmt::format("{} of {}", what, ad.appName);
}

}  // namespace

const std::vector<std::string>& VantoriumNativeAdView::outletNames() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> all;
    for (const auto& [name, make] : outletMakers()) all.push_back(name);
    return all;
  }();
  return names;
}

std::shared_ptr<ui::View> VantoriumNativeAdView::makeOutlet(const std::string& name) {
  const auto maker = outletMakers().find(name);
  if (maker == outletMakers().end()) return nullptr;
  auto view = maker->second(outlets, host_);
  view->setOutlet(name);
  addSubview(view);
  return view;
}

void VantoriumNativeAdView::show(std::shared_ptr<VantoriumNativeAd> nativeAd, AdServices services) {
  nativeAd_ = std::move(nativeAd);
  services_ = std::move(services);
  updateUI(*nativeAd_);
  const auto self = shared_from_this();  // handlers of the application may let go of the view
  if (const auto fill = didFill) fill();
  reportImpressionIfNeeded();
}

void VantoriumNativeAdView::updateUI(const VantoriumNativeAd& native) {
  updateTexts(native);
  if (const auto button = outlets.callToActionButton.lock()) {
    button->setAction(acting(&VantoriumNativeAdView::didTapCTAButton));
  }
  if (const auto icon = outlets.iconImageView.lock()) {
    icon->setAccessibilityLabel(pictureLabel("Icon", native));
    if (native.appIconImage()) {
      showImage(*icon, native.appIconImage());
    } else {
      setImage(icon, native.appIconURL, services_);
    }
  }
  if (const auto media = outlets.mediaView.lock()) {
    media->setAccessibilityLabel(pictureLabel("Video or picture", native));
    media->nativeAd = nativeAd_;
    media->setServices(services_);
    media->updateUI(native);
  }
  updatePictures(native);
  updatePrivacyPolicy(native);
}

void VantoriumNativeAdView::updateTexts(const VantoriumNativeAd& native) {
  setText(outlets.appNameLabel, native.appName);
  setText(outlets.appDeveloperLabel, native.appDeveloper);
  setText(outlets.appDescriptionLabel, native.appDescription);
  setText(outlets.reviewsLabel, fmt::format("{}", native.reviewsCount));
  if (const auto button = outlets.callToActionButton.lock()) button->setTitle(native.callToActionText);
  if (const auto rating = outlets.ratingView.lock()) rating->setRating(native.rating);
}

void VantoriumNativeAdView::updatePictures(const VantoriumNativeAd& native) {
  const auto view = outlets.imageView.lock();
  if (!view) return;
  showImage(*view, nullptr);  // an ad without a picture must not keep another's
  view->setAccessibilityLabel(pictureLabel("Picture", native));
  // Each would take the place of the one before.
  const auto last = std::find_if(native.assets.rbegin(), native.assets.rend(), [](const auto& asset) {
    return assetType(asset->type) == AssetType::image;
  });
  if (last == native.assets.rend()) return;
  if ((*last)->filePath) {
    showImage(*view, savedPicture(**last));
  } else {
    setImage(view, (*last)->URL, services_);
  }
}

void VantoriumNativeAdView::updatePrivacyPolicy(const VantoriumNativeAd& native) {
  const auto view = outlets.privacyPolicyImageView.lock();
  if (!view) return;
  view->setClipsToBounds(true);
  view->setContentMode(ui::ContentMode::scaleAspectFit);
  view->setAccessibilityLabel(URL::parse(native.privacyPolicyURL) ? "Privacy policy" : "");
  setImage(view, native.privacyPolicyImageURL, services_);
  if (view->recognizesTaps()) return;
  view->addTapRecognizer(acting(&VantoriumNativeAdView::didTapPrivacyPolicyImageView));
}

std::function<void()> VantoriumNativeAdView::acting(void (VantoriumNativeAdView::*action)()) {
  // The outlet may outlive this view.
  return [weak = weak_from_this(), action] {
    const auto self = std::static_pointer_cast<VantoriumNativeAdView>(weak.lock());
    if (self) ((*self).*action)();
  };
}

void VantoriumNativeAdView::didMoveToWindow() {
  View::didMoveToWindow();
  reportImpressionIfNeeded();
}

void VantoriumNativeAdView::reportImpressionIfNeeded() {
  if (!nativeAd_ || window() == nullptr) return;
  if (std::exchange(nativeAd_->isImpressionReported, true)) return;
  if (const auto reports = services_.reports()) reports->reportImpression(nativeAd_->impressionID);
}

void VantoriumNativeAdView::didTapCTAButton() {
  if (!nativeAd_) return;
  const auto ad = nativeAd_;  // what is opened below may have this view filled anew
  if (!std::exchange(ad->isClickReported, true)) {
    if (const auto reports = services_.reports())
      reports->reportClick(ad->impressionID, serverParameter ? serverParameter->parameters : std::nullopt);
  }
  if (const auto media = outlets.mediaView.lock()) media->pause();
  if (const auto context = services_.context.lock()) {
    context->tellDelegate(
        DelegateMethod::didReceiveClick,
        [placement = ad->placementID](VantoriumDelegate& delegate) { delegate.didReceiveClick(placement); });
  }
  if (URL::parse(ad->trackingURL)) host_.application().openURL(ad->trackingURL);
}

void VantoriumNativeAdView::didTapPrivacyPolicyImageView() {
  if (!nativeAd_ || !URL::parse(nativeAd_->privacyPolicyURL)) return;
  host_.application().openURL(nativeAd_->privacyPolicyURL);
}

}  // namespace vantorium
