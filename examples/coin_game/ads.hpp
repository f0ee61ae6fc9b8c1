#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <vantorium/vantorium.hpp>

#include "timeline.hpp"

/// All that the game has to do with the SDK: it keeps a rewarded video ready, shows it and hears of the
/// reward. Everything here happens on the main thread.
class Ads final : public vantorium::VantoriumDelegate, public std::enable_shared_from_this<Ads> {
 public:
  enum class State {
    loading,      ///< A video is on its way.
    ready,        ///< `show` would show one.
    showing,      ///< One is on screen.
    unavailable,  ///< There is none; `load` tries again.
  };

  explicit Ads(Timeline& timeline) : timeline_(timeline) {}

  std::function<void(State)> onStateChange;
  std::function<void(std::int64_t coins)> onReward;

  /// Introduces the game to the service, which makes the SDK fetch a first video.
  void start(const std::string& appID, const std::string& placement);
  /// Tries to get a video again after none was to be had.
  void load();
  void show();

 private:
  void didConfigure() override;
  void didFailConfigure(const std::optional<vantorium::Error>& error) override;
  void didPrecache(const std::string& placement) override;
  void didFailPrecache(const std::string& placement, const std::optional<vantorium::Error>& error) override;
  void didReceiveClick(const std::string& placement) override;
  void didReceiveReward(const std::string& placement, std::int64_t amount) override;

  void didClose(bool success, const std::optional<vantorium::Error>& error);
  void setState(State state);
  vantorium::Vantorium::Completion noted(std::string what);

  Timeline& timeline_;
  std::string appID_;
  std::string placement_;
  State state_ = State::loading;
};
