#pragma once

#include <gtkmm.h>

#include <cstdint>
#include <memory>
#include <string>

#include "ads.hpp"
#include "bay_view.hpp"
#include "timeline.hpp"

/// The whole game: fish for coins, or watch a video or play another game for a handful of them, and spend
/// them on the bay.
class GameWindow final : public Gtk::ApplicationWindow {
 public:
  /// Where in the game ads are shown, by the names that the service knows.
  struct Placements {
    std::string video, playable, wall, specialOffer;
  };

  GameWindow(std::shared_ptr<Ads> ads, Placements placements, Timeline& timeline);
  ~GameWindow() override;

 private:
  void buildLayout();
  Gtk::Widget& buildHeader();
  Gtk::Widget& buildFooter();
  Gtk::Widget& buildPanel();
  void connect();
  void addCoins(std::int64_t coins);
  void buyNext();
  void showCoins();
  void showAdState(const std::string& placement, Ads::State state);
  void showOffers(bool hasWall, bool hasSpecialOffer);

  const std::shared_ptr<Ads> ads_;
  const Placements placements_;
  Timeline& timeline_;
  std::int64_t coins_ = 0;
  int built_ = 0;
  Ads::State videoState_ = Ads::State::loading, playableState_ = Ads::State::loading;

  Gtk::Overlay layers_;
  Gtk::Button fish_;
  BayView bay_;
  Gtk::CenterBox header_;
  Gtk::Label title_, coinLabel_;
  Gtk::Label hint_;
  Gtk::Box footer_{Gtk::Orientation::VERTICAL}, panel_{Gtk::Orientation::VERTICAL}, offer_,
      offerTexts_{Gtk::Orientation::VERTICAL}, pages_, statusLine_;
  Gtk::Label offerName_, offerText_, status_;
  Gtk::Button buy_, watch_, play_, wall_, specialOffer_, retry_;
};
