#include "feed_window.hpp"

#include <utility>

#include "article_views.hpp"

FeedWindow::FeedWindow(std::unique_ptr<Feed> feed) : feed_(std::move(feed)) {
  set_title("Morning Tide");
  set_default_size(390, 844);
  const auto css = Gtk::CssProvider::create();
  css->load_from_resource("/org/example/NewsFeed/style.css");
  Gtk::StyleContext::add_provider_for_display(get_display(), css, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);

  back_.set_icon_name("go-previous-symbolic");
  back_.set_tooltip_text("Back to the front page");
  back_.set_visible(false);
  back_.signal_clicked().connect([this] { goBack(); });
  header_.pack_start(back_);
  set_titlebar(header_);

  pages_.add(*feed_);
  pages_.set_transition_type(Gtk::StackTransitionType::SLIDE_LEFT_RIGHT);
  set_child(pages_);
  feed_->onOpen = [this](const Article& article) { open(article); };
  connectKeys();
}

/// An ad's video pauses while the front page is out of sight.
void FeedWindow::open(const Article& article) {
  if (openPage_ != nullptr) pages_.remove(*openPage_);
  opener_ = get_focus();
  readUntil_ = feed_->get_vadjustment()->get_value();
  openPage_ = makeArticlePage(article);
  pages_.add(*openPage_);
  pages_.set_visible_child(*openPage_);
  openPage_->grab_focus();  // keys scroll the story
  back_.set_visible(true);
}

/// The reader goes on where he was.
void FeedWindow::goBack() {
  if (pages_.get_visible_child() == feed_.get()) return;
  pages_.set_visible_child(*feed_);
  if (opener_ != nullptr) opener_->grab_focus();
  feed_->get_vadjustment()->set_value(readUntil_);
  back_.set_visible(false);
}

void FeedWindow::connectKeys() {
  const auto shortcuts = Gtk::ShortcutController::create();
  const auto add = [&](const char* keys, const Glib::RefPtr<Gtk::ShortcutAction>& action) {
    shortcuts->add_shortcut(Gtk::Shortcut::create(Gtk::ShortcutTrigger::parse_string(keys), action));
  };
  add("<Control>q|<Control>w", Gtk::NamedAction::create("window.close"));
  add("Escape|<Alt>Left", Gtk::CallbackAction::create([this](Gtk::Widget&, const Glib::VariantBase&) {
        goBack();
        return true;
      }));
  add_controller(shortcuts);
}
