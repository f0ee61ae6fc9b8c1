#pragma once

#include <gtkmm.h>

#include <functional>

#include "articles.hpp"

/// A story in the feed: what it is about, and a small picture. `open` is called when it is chosen. Managed.
Gtk::Button* makeArticleRow(const Article& article, const std::function<void()>& open);

/// The story itself, to be scrolled. Managed.
Gtk::Widget* makeArticlePage(const Article& article);
