#include "article_views.hpp"

#include <fmt/format.h>

#include <map>
#include <string>
#include <utility>

#include "column.hpp"

namespace {

constexpr int readingWidth = 640, pictureHeight = 240;  // points
constexpr int thumbnailWidth = 112, thumbnailHeight = 84;

/// The drawing at twice its size in points, so that it is sharp on dense screens too. Rows of the same story
/// share it.
Glib::RefPtr<Gdk::Texture> texture(const std::string& name, int width) {
  static std::map<std::pair<std::string, int>, Glib::RefPtr<Gdk::Texture>> textures;
  auto& found = textures[{name, width}];
  if (!found) {
    const auto path = fmt::format("/org/example/NewsFeed/pictures/{}.svg", name);
    found = Gdk::Texture::create_for_pixbuf(Gdk::Pixbuf::create_from_resource(path, 2 * width, -1));
  }
  return found;
}

/// The drawing in a place of this size; 0 for as wide as there is room.
Gtk::Widget* makePicture(const Article& article, int drawnWidth, int width, int height) {
  auto* const picture = Gtk::make_managed<Gtk::Picture>(texture(article.picture, drawnWidth));
  picture->set_content_fit(Gtk::ContentFit::COVER);
  auto* const place = Gtk::make_managed<Gtk::Box>();
  place->set_size_request(width, height);
  auto* const overlay = Gtk::make_managed<Gtk::Overlay>();  // only the place has a say in how large it is
  overlay->set_child(*place);
  overlay->add_overlay(*picture);
  overlay->set_overflow(Gtk::Overflow::HIDDEN);
  overlay->set_valign(Gtk::Align::START);
  overlay->add_css_class("picture");
  return overlay;
}

Gtk::Label* makeText(const Glib::ustring& text, const Glib::ustring& cssClass) {
  auto* const label = Gtk::make_managed<Gtk::Label>(text);
  label->add_css_class(cssClass);
  label->set_wrap(true);
  label->set_natural_wrap_mode(Gtk::NaturalWrapMode::NONE);
  label->set_xalign(0);
  return label;
}

Glib::ustring byline(const Article& article) {
  return fmt::format("{} · {}", article.section, article.author);
}

}  // namespace

Gtk::Button* makeArticleRow(const Article& article, const std::function<void()>& open) {
  auto* const texts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 4);
  texts->append(*makeText(article.title, "headline"));
  texts->append(*makeText(article.summary, "summary"));
  texts->append(*makeText(byline(article), "caption"));
  texts->set_hexpand(true);

  auto* const layout = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 16);
  layout->append(*texts);
  layout->append(*makePicture(article, thumbnailWidth, thumbnailWidth, thumbnailHeight));

  auto* const row = Gtk::make_managed<Gtk::Button>();
  row->set_child(*layout);
  row->set_has_frame(false);
  row->add_css_class("article");
  row->signal_clicked().connect(open);
  return row;
}

Gtk::Widget* makeArticlePage(const Article& article) {
  auto* const texts = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 12);
  texts->add_css_class("reading");
  texts->append(*makePicture(article, readingWidth, 0, pictureHeight));
  texts->append(*makeText(article.title, "title-1"));
  texts->append(*makeText(byline(article), "caption"));
  texts->append(*makeText(article.summary, "lead"));
  texts->append(*makeText(article.text, "body"));

  auto* const frame = Gtk::make_managed<Gtk::Box>();
  frame->set_layout_manager(Column::create(readingWidth));
  frame->append(*texts);
  auto* const page = Gtk::make_managed<Gtk::ScrolledWindow>();
  page->set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
  page->set_child(*frame);
  page->set_focusable(true);
  return page;
}
