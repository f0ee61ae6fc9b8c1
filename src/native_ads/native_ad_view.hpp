#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/export.h>
#include <vantorium/options.hpp>

#include "model/native_ad.hpp"
#include "native_ads/ad_services.hpp"
#include "native_ads/media_view.hpp"
#include "native_ads/rating_view.hpp"
#include "platform/host.hpp"
#include "platform/ui/controls.hpp"

namespace vantorium {

/// A view that the application has laid out for native ads. It puts an ad into whichever outlets are
/// connected, reports the impression once it is on screen, and answers taps on the call to action and on the
/// privacy policy's image. What was reported is noted in the ad, so an ad shown twice is reported once.
///
/// Main thread only; the host outlives the view.
class VANTORIUM_HOST_API VantoriumNativeAdView : public ui::View {
 public:
  explicit VantoriumNativeAdView(Host& host, ui::Rect frame = {}) : View(frame), host_(host) {}
  const char* className() const override { return "VantoriumNativeAdView"; }

  /// The views that an ad is put into; each may be missing, or go at any time.
  struct Outlets {
    std::weak_ptr<ui::ImageView> iconImageView;
    std::weak_ptr<ui::Label> appNameLabel, appDeveloperLabel, appDescriptionLabel, reviewsLabel;
    std::weak_ptr<ui::Button> callToActionButton;
    std::weak_ptr<ui::ImageView> imageView;
    std::weak_ptr<VantoriumMediaView> mediaView;
    std::weak_ptr<VantoriumRatingView> ratingView;
    std::weak_ptr<ui::ImageView> privacyPolicyImageView;
  };
  Outlets outlets;
  /// Makes a view of the class that the outlet is for, connects it and adds it as a subview. Null when there
  /// is no outlet of that name.
  std::shared_ptr<ui::View> makeOutlet(const std::string& name);
  /// All names that `makeOutlet` knows.
  static const std::vector<std::string>& outletNames();

  /// For hosts: called when the view has been filled, before anybody hears of it.
  std::function<void()> didFill;
  /// Sent with the click's report.
  std::optional<VantoriumServerParameter> serverParameter;
  /// The ad shown; null for none.
  const std::shared_ptr<VantoriumNativeAd>& nativeAd() const { return nativeAd_; }
  /// Shows the ad in place of another; `services` are whom to report to and to load pictures by.
  void show(std::shared_ptr<VantoriumNativeAd> nativeAd, AdServices services);

  void didTapCTAButton();
  void didTapPrivacyPolicyImageView();

  void didMoveToWindow() override;

 private:
  void updateUI(const VantoriumNativeAd& native);
  void updateTexts(const VantoriumNativeAd& native);
  void updatePictures(const VantoriumNativeAd& native);
  void updatePrivacyPolicy(const VantoriumNativeAd& native);
  void reportImpressionIfNeeded();
  /// A handler that calls the action as long as the view is there.
  std::function<void()> acting(void (VantoriumNativeAdView::*action)());

  Host& host_;
  AdServices services_;
  std::shared_ptr<VantoriumNativeAd> nativeAd_;
};

}  // namespace vantorium
