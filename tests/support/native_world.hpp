#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "native_ads/native_ad_view.hpp"
#include "sandbox/service/catalogue.hpp"
#include "support/sdk_world.hpp"

namespace vantorium::testing {

/// A configured SDK, and an application that lays native ads out itself.
struct NativeWorld : SdkWorld {
  using Ads = std::vector<std::shared_ptr<VantoriumNativeAd>>;

  /// Configures the SDK and precaches the placement; what failed is in `error`.
  Ads fetch(const std::string& placement, int number = 1, bool withAssets = true) {
    const auto options = std::make_shared<VantoriumNativeAdOptions>();
    options->numberOfAdsToPrecache = number;
    options->shouldDownloadAssets = withAssets;
    if (!sdk->context()->flags().isConfigured) {
      EXPECT_TRUE(configure());
    }
    bool isDone = false;
    Ads fetched;
    sdk->precacheNativeAds(placement, options, nullptr, [&](Ads ads, std::optional<Error> failure) {
      fetched = std::move(ads);
      error = std::move(failure);
      isDone = true;
    });
    EXPECT_TRUE(host->loop().runUntil([&] { return isDone; }));
    return fetched;
  }
  /// The one ad of an answer of the test's own; "{{base}}" stands for the service.
  std::shared_ptr<VantoriumNativeAd> fetchAd(const nlohmann::json& ad, bool withAssets = true) {
    nlohmann::json answer{{"status", "success"}, {"result", nlohmann::json::array({ad})}};
    sandbox::fillIn(answer, "{{base}}", server.baseURL());
    server.setAnswer("/api/sdk/native", 200, "application/json", answer.dump());
    const Ads ads = fetch("p", 1, withAssets);
    return ads.empty() ? nullptr : ads.front();
  }

  /// A view with every outlet, or with those named, in no window.
  std::shared_ptr<VantoriumNativeAdView> makeView(
      const std::vector<std::string>& outlets = VantoriumNativeAdView::outletNames()) {
    auto view = std::make_shared<VantoriumNativeAdView>(*host, ui::Rect{0, 0, 300, 400});
    for (const auto& name : outlets) view->makeOutlet(name)->setFrame({0, 0, 300, 169});
    return view;
  }
  void putInWindow(const std::shared_ptr<ui::View>& view) {
    host->headlessApplication().rootViewController()->view().addSubview(view);
  }
  void populate(const std::shared_ptr<VantoriumNativeAdView>& view,
                const std::shared_ptr<VantoriumNativeAd>& ad, const Sdk::AdOptions& options = {}) {
    sdk->populateNativeAdView(view, ad, options, noting("populate"));
  }
  /// A view that shows the ad on screen.
  std::shared_ptr<VantoriumNativeAdView> show(const std::shared_ptr<VantoriumNativeAd>& ad,
                                              const Sdk::AdOptions& options = {}) {
    auto view = makeView();
    putInWindow(view);
    populate(view, ad, options);
    return view;
  }
  static std::shared_ptr<headless::ScriptedPlayer> playerOf(const VantoriumNativeAdView& view) {
    for (const auto& layer : view.outlets.mediaView.lock()->sublayers()) {
      const auto* const players = dynamic_cast<ui::PlayerLayer*>(layer.get());
      if (players != nullptr) return std::dynamic_pointer_cast<headless::ScriptedPlayer>(players->player());
    }
    return nullptr;
  }
  static std::string imageOf(const std::weak_ptr<ui::ImageView>& view) {
    const auto image = view.lock()->image();
    return image ? image->name() : "";
  }
  /// Waits until the image view shows the picture at an address.
  bool awaitImage(const std::weak_ptr<ui::ImageView>& view, const std::string& url) {
    return host->loop().runUntil([&] { return imageOf(view) == url; });
  }
  /// What the host was asked to open so far.
  std::size_t opened(const std::string& url) const {
    std::size_t found = 0;
    for (const auto& event : host->events()) {
      found += event["event"] == "openURL" && event["url"] == url && event["opened"] == true;
    }
    return found;
  }
  std::string url(const std::string& path) const { return server.baseURL() + path; }

  std::optional<Error> error;
};

}  // namespace vantorium::testing
