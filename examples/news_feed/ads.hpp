#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include <vantorium/vantorium.hpp>

#include "coin_game/timeline.hpp"

/// All that the newspaper has to do with the SDK but for laying ads out: it introduces itself to the service
/// and fetches native ads. Everything here happens on the main thread.
class Ads final : public vantorium::VantoriumDelegate, public std::enable_shared_from_this<Ads> {
 public:
  explicit Ads(Timeline& timeline) : timeline_(timeline) {}

  /// An ad is there, with its pictures and its video on disk.
  std::function<void(const std::shared_ptr<vantorium::VantoriumNativeAd>&)> onAd;

  /// Fetches so many ads for each placement. What cannot be had now is tried again later.
  void start(const std::string& appID, std::map<std::string, int> numberByPlacement);

 private:
  void didConfigure() override;
  void didFailConfigure(const std::optional<vantorium::Error>& error) override;
  void didReceiveClick(const std::string& placement) override;

  void configure();
  void fetch(const std::string& placement);
  void didFetch(const std::string& placement, const vantorium::Vantorium::NativeAds& ads,
                const std::optional<vantorium::Error>& error);
  void later(std::function<void(Ads&)> action);

  Timeline& timeline_;
  std::string appID_;
  std::map<std::string, int> missing_;  ///< how many ads are still to come, by placement
};
