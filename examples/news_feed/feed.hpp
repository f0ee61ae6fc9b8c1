#pragma once

#include <gtkmm.h>

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <vantorium/vantorium.hpp>

#include "articles.hpp"
#include "coin_game/timeline.hpp"

/// The newspaper's front page: stories under each other, and ads between them. An ad is put where the reader
/// has not been yet, below what is seen, so that nothing moves under the eye and no place is kept empty for
/// one that may not come.
class Feed final : public Gtk::ScrolledWindow {
 public:
  /// Where an ad of a placement would like to stand. It comes after so many stories, or later.
  struct Place {
    std::string placement;
    std::size_t after;
  };

  /// Stories repeat when there are more than the issue has. The host outlives the feed.
  Feed(std::shared_ptr<vantorium::Host> host, std::size_t storyCount, std::vector<Place> places,
       Timeline& timeline);

  /// A story was chosen.
  std::function<void(const Article&)> onOpen;

  /// The ad appears in a place for its placement, now or once one is out of sight.
  void add(const std::shared_ptr<vantorium::VantoriumNativeAd>& ad);
  /// Scrolls to an ad, counted from 1, once all have come.
  void showAd(std::size_t number);

 private:
  struct Waiting {
    std::shared_ptr<vantorium::VantoriumNativeAd> ad;
    std::size_t after;
  };

  void settleLater();
  void settle();
  bool place(const Waiting& waiting);
  bool isFree(std::size_t gap);
  Gtk::Widget* makeCard(const std::shared_ptr<vantorium::VantoriumNativeAd>& ad);
  void insert(Gtk::Widget& card, std::size_t gap);
  void scrollToShownAd();
  double distanceFromTop(Gtk::Widget& widget);

  const std::shared_ptr<vantorium::Host> host_;
  Timeline& timeline_;
  Gtk::Box frame_;
  Gtk::Box column_{Gtk::Orientation::VERTICAL};
  std::vector<Gtk::Widget*> stories_;
  std::vector<Place> freePlaces_;
  std::vector<Waiting> waiting_;
  std::multimap<std::size_t, Gtk::Widget*> ads_;  ///< by the number of stories before them
  std::size_t shownAd_ = 0;                       ///< to be scrolled to; 0 for none
  bool isSettling_ = false;
};
