#pragma once

#include <gtkmm.h>

#include <memory>

#include "articles.hpp"
#include "feed.hpp"

/// The newspaper: its front page, and one story at a time in front of that.
class FeedWindow final : public Gtk::ApplicationWindow {
 public:
  explicit FeedWindow(std::unique_ptr<Feed> feed);

 private:
  void open(const Article& article);
  void goBack();
  void connectKeys();

  const std::unique_ptr<Feed> feed_;
  Gtk::HeaderBar header_;
  Gtk::Button back_;
  Gtk::Stack pages_;
  Gtk::Widget* openPage_ = nullptr;
  Gtk::Widget* opener_ = nullptr;  ///< what had the focus when the story was opened, and
  double readUntil_ = 0;           ///< how far the front page was scrolled
};
