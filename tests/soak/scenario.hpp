#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "soak/application.hpp"
#include "soak/books.hpp"
#include "soak/dice.hpp"
#include "soak/measure.hpp"
#include "soak/options.hpp"
#include "soak/service.hpp"

namespace vantorium::soak {

/// An application that lives through good and bad days: each round changes the weather (time, network, faults
/// of the service, files deleted behind the SDK's back), shows what can be shown and plays it to an end of
/// some kind. Every so often all is brought to rest, what is owed must have come, and the process is
/// measured.
class Scenario {
 public:
  /// Throws std::runtime_error when the service or the home cannot be had.
  explicit Scenario(const Options& options);
  ~Scenario();

  /// Plays the next round.
  void playRound();
  /// Ends faults, lets every answer come, checks and measures.
  void rest();
  /// Ends the launch. To be called once, after the last round; it rests first.
  void end();

  int round() const { return books_.round; }
  const std::vector<Sample>& samples() const { return samples_; }
  const std::map<std::string, std::uint64_t>& violations() const { return books_.violations(); }
  std::uint64_t shown(const std::string& what) const { return shown_.contains(what) ? shown_.at(what) : 0; }
  /// What happened in all, for people.
  nlohmann::json totals();

 private:
  /// What the front screen shows, as its store product says: its number, and the paths its files are made of.
  struct Shown {
    std::int64_t number = 0;
    std::string film;
    std::string page;
    std::string source;  ///< the film's file
    std::string impression() const { return "ad-" + std::to_string(number); }
  };
  /// A film that failed on screen: what is handed out afterwards must not be given the same file.
  struct FailedFilm {
    std::int64_t latest = 0;  ///< the number of the last record handed out before
    std::string file;         ///< which file it was, whatever its path
  };
  struct NativeAd {
    std::shared_ptr<VantoriumNativeAd> ad;
    int launch = 0;
  };

  // weather.cpp
  void changeWeather(Dice& dice);
  void setFaults(Dice& dice);
  void beginOutage(Dice& dice);
  void passTime(Dice& dice);
  void deleteFiles(Dice& dice);
  bool isYoung() const;
  void restart(Dice& dice);

  // full_screen.cpp
  void showCampaign(Dice& dice);
  void checkRefusal(const std::string& placement, bool wasReady, const Outcome& outcome);
  void checkFile(const std::string& path, const std::string& made, const std::string& what);
  void checkScreen(const Shown& shown);
  Shown readProduct() const;
  void play(Dice& dice, const std::string& placement, const Shown& shown);
  bool playFilm(Dice& dice, const std::string& placement, const Shown& shown);
  void playGame(Dice& dice, const std::string& placement, const Shown& shown);
  void seeToTheEnd(const std::string& placement, const Shown& shown);
  void leavePage(Dice& dice, const Shown& shown);
  void showPopup(Dice& dice);
  void showWall(Dice& dice);
  void closeFront();
  void expectEnd(const Outcome& outcome, const std::string& call);

  // native.cpp
  void fetchNativeAds(Dice& dice);
  void showNativeAd(Dice& dice);
  void reportNativeAd(Dice& dice);
  void checkNativeFiles(const VantoriumNativeAd& ad);
  void abandon(const NativeAd& dropped);
  void dropNativeAds(std::size_t keep);

  // rest.cpp
  bool poll(const std::function<bool()>& isDone, const char* kind);
  void awaitReadiness();
  void settle();
  void awaitDeletion();
  void takeSample();

  const Options options_;
  Books books_;
  Service service_;
  Application application_;
  nlohmann::json faults_ = nlohmann::json::array();
  int launch_ = 1;
  int offlineUntil_ = 0;  ///< a round; 0 while online
  std::chrono::steady_clock::time_point outageUntil_;
  std::vector<NativeAd> nativeAds_;
  std::map<std::string, FailedFilm> failedFilms_;  ///< by what they are made of
  std::vector<std::filesystem::path> abandoned_;   ///< files of native ads that nobody holds any more
  std::map<std::string, std::uint64_t> shown_;
  std::vector<Sample> samples_;
  std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
};

/// Where the application's caches lie.
std::filesystem::path cachesOf(const Options& options);

}  // namespace vantorium::soak
