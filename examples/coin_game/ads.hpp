#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vantorium/vantorium.hpp>

#include "timeline.hpp"

/// All that the game has to do with the SDK: it keeps an ad ready for each placement, shows it and hears of
/// the reward. Everything here happens on the main thread.
class Ads final : public vantorium::VantoriumDelegate, public std::enable_shared_from_this<Ads> {
 public:
  enum class State {
    loading,      ///< An ad is on its way.
    ready,        ///< `show` would show one.
    showing,      ///< One is on screen.
    unavailable,  ///< There is none; `load` tries again.
  };

  explicit Ads(Timeline& timeline) : timeline_(timeline) {}

  std::function<void(const std::string& placement, State)> onStateChange;
  std::function<void(std::int64_t coins)> onReward;
  /// Whether the offer wall and the special offer can be shown.
  std::function<void(bool hasWall, bool hasSpecialOffer)> onOffersChange;

  /// Introduces the game to the service, which makes the SDK fetch a first ad for each placement.
  void start(const std::string& appID, const std::vector<std::string>& placements);
  /// Tries to get what is unavailable once more.
  void retry();
  void show(const std::string& placement);
  void showOfferWall(const std::string& placement);
  void showSpecialOffer(const std::string& placement);

 private:
  void didConfigure() override;
  void didFailConfigure(const std::optional<vantorium::Error>& error) override;
  void didPrecache(const std::string& placement) override;
  void didFailPrecache(const std::string& placement, const std::optional<vantorium::Error>& error) override;
  void didReceiveClick(const std::string& placement) override;
  void didReceiveReward(const std::string& placement, std::int64_t amount) override;

  void load(const std::string& placement);
  void configure();
  void loadTemplate();
  void tellOffers();
  vantorium::Vantorium::Completion closed(std::string placement, std::string what);
  void didClose(const std::string& placement, bool success, const std::optional<vantorium::Error>& error);
  bool isWaitedFor(const std::string& placement) const;
  void setState(const std::string& placement, State state);
  vantorium::Vantorium::Completion noted(std::string what);

  Timeline& timeline_;
  std::string appID_;
  std::map<std::string, State> states_;  ///< by placement
  bool hasTemplate_ = false;
};
