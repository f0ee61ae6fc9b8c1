#pragma once

#include <gtkmm.h>

#include <cstdint>
#include <memory>

#include "ads.hpp"
#include "bay_view.hpp"
#include "timeline.hpp"

/// The whole game: fish for coins, or watch a video for a handful of them, and spend them on the bay.
class GameWindow final : public Gtk::Window {
 public:
  GameWindow(std::shared_ptr<Ads> ads, Timeline& timeline);
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
  void showAdState(Ads::State state);

  const std::shared_ptr<Ads> ads_;
  Timeline& timeline_;
  std::int64_t coins_ = 0;
  int built_ = 0;

  Gtk::Overlay layers_;
  Gtk::Button fish_;
  BayView bay_;
  Gtk::CenterBox header_;
  Gtk::Label title_, coinLabel_;
  Gtk::Label hint_;
  Gtk::Box footer_{Gtk::Orientation::VERTICAL}, panel_{Gtk::Orientation::VERTICAL}, offer_,
      offerTexts_{Gtk::Orientation::VERTICAL}, statusLine_;
  Gtk::Label offerName_, offerText_, status_;
  Gtk::Button buy_, watch_, retry_;
};
