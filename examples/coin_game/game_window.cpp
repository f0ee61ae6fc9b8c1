#include "game_window.hpp"

#include <array>

#include "style.hpp"

namespace {

constexpr std::int64_t price = 50;
constexpr const char* coinSign = "<span color='#f5b301'>●</span> ";

struct Offer {
  const char* name;
  const char* text;
};
constexpr std::array<Offer, BayView::buildingCount> offers{{
    {"Striped sail", "A little colour for your boat"},
    {"Lighthouse", "It shows you the way home"},
    {"Whale", "A friend who likes to visit"},
}};

void setUpLabel(Gtk::Label& label, const char* cssClass, Gtk::Align align) {
  label.add_css_class(cssClass);
  label.set_halign(align);
  label.set_wrap(true);
  label.set_natural_wrap_mode(Gtk::NaturalWrapMode::NONE);
  label.set_xalign(0);
}

}  // namespace

GameWindow::GameWindow(std::shared_ptr<Ads> ads, Placements placements, Timeline& timeline)
    : ads_(std::move(ads)), placements_(std::move(placements)), timeline_(timeline) {
  set_title("Little Bay");
  set_default_size(390, 844);
  const auto css = Gtk::CssProvider::create();
  css->load_from_data(style);
  Gtk::StyleContext::add_provider_for_display(get_display(), css, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  buildLayout();
  connect();
  showCoins();
  showOffers(false, false);
}

GameWindow::~GameWindow() {
  ads_->onStateChange = nullptr;
  ads_->onReward = nullptr;
  ads_->onOffersChange = nullptr;
}

void GameWindow::buildLayout() {
  fish_.set_child(bay_);
  fish_.add_css_class("bay");
  layers_.set_child(fish_);
  layers_.add_overlay(buildHeader());
  layers_.add_overlay(buildFooter());
  set_child(layers_);
}

Gtk::Widget& GameWindow::buildHeader() {
  title_.set_text("Little Bay");
  title_.add_css_class("title");
  coinLabel_.add_css_class("coins");
  header_.set_start_widget(title_);
  header_.set_end_widget(coinLabel_);
  header_.set_valign(Gtk::Align::START);
  header_.add_css_class("header");
  header_.set_can_target(false);
  return header_;
}

Gtk::Widget& GameWindow::buildFooter() {
  hint_.set_text("Tap the boat to catch a coin");
  hint_.add_css_class("hint");
  hint_.set_can_target(false);
  footer_.append(hint_);
  footer_.append(buildPanel());
  footer_.set_valign(Gtk::Align::END);
  return footer_;
}

Gtk::Widget& GameWindow::buildPanel() {
  setUpLabel(offerName_, "offer-name", Gtk::Align::START);
  setUpLabel(offerText_, "quiet", Gtk::Align::START);
  offerTexts_.append(offerName_);
  offerTexts_.append(offerText_);
  offerTexts_.set_hexpand(true);
  buy_.set_valign(Gtk::Align::CENTER);
  buy_.add_css_class("buy");
  offer_.append(offerTexts_);
  offer_.append(buy_);

  watch_.set_label("Watch a video for 50 coins");
  watch_.add_css_class("watch");
  play_.set_label("Play for coins");
  play_.add_css_class("play");
  wall_.set_label("Offers");
  specialOffer_.set_label("Special offer");
  for (Gtk::Button* const button : {&wall_, &specialOffer_}) {
    button->add_css_class("page");
    button->set_hexpand(true);
    pages_.append(*button);
  }
  pages_.set_homogeneous(true);
  pages_.set_spacing(12);
  setUpLabel(status_, "quiet", Gtk::Align::CENTER);
  retry_.set_label("Try again");
  retry_.add_css_class("retry");
  statusLine_.set_halign(Gtk::Align::CENTER);
  statusLine_.append(status_);
  statusLine_.append(retry_);

  panel_.append(offer_);
  panel_.append(watch_);
  panel_.append(play_);
  panel_.append(pages_);
  panel_.append(statusLine_);
  panel_.add_css_class("panel");
  return panel_;
}

void GameWindow::connect() {
  fish_.signal_clicked().connect([this] {
    bay_.tossCoin();
    addCoins(1);
  });
  buy_.signal_clicked().connect([this] { buyNext(); });
  watch_.signal_clicked().connect([this] { ads_->show(placements_.video); });
  play_.signal_clicked().connect([this] { ads_->show(placements_.playable); });
  wall_.signal_clicked().connect([this] { ads_->showOfferWall(placements_.wall); });
  specialOffer_.signal_clicked().connect([this] { ads_->showSpecialOffer(placements_.specialOffer); });
  retry_.signal_clicked().connect([this] { ads_->retry(); });
  ads_->onStateChange = [this](const std::string& placement, Ads::State state) {
    showAdState(placement, state);
  };
  ads_->onOffersChange = [this](bool hasWall, bool hasSpecialOffer) { showOffers(hasWall, hasSpecialOffer); };
  ads_->onReward = [this](std::int64_t coins) { addCoins(coins); };

  const auto shortcuts = Gtk::ShortcutController::create();
  shortcuts->add_shortcut(Gtk::Shortcut::create(Gtk::ShortcutTrigger::parse_string("<Control>q|<Control>w"),
                                                Gtk::NamedAction::create("window.close")));
  add_controller(shortcuts);
}

void GameWindow::addCoins(std::int64_t coins) {
  coins_ += coins;
  timeline_.note("game", "coins", {{"change", std::to_string(coins)}, {"total", std::to_string(coins_)}});
  showCoins();
}

void GameWindow::buyNext() {
  ++built_;
  bay_.setBuiltCount(built_);
  addCoins(-price);
}

void GameWindow::showCoins() {
  const std::string sign = coinSign;
  coinLabel_.set_markup(sign + std::to_string(coins_));
  const bool isComplete = built_ >= BayView::buildingCount;
  offerName_.set_text(isComplete ? "Your bay is complete" : offers.at(built_).name);
  offerText_.set_text(isComplete ? "Enjoy the evening!" : offers.at(built_).text);
  buy_.set_visible(!isComplete);
  buy_.set_label(std::to_string(price) + " coins");
  buy_.set_sensitive(!isComplete && coins_ >= price);
}

void GameWindow::showAdState(const std::string& placement, Ads::State state) {
  using enum Ads::State;
  const bool isVideo = placement == placements_.video;
  (isVideo ? videoState_ : playableState_) = state;
  const auto isEither = [this](Ads::State wanted) {
    return videoState_ == wanted || playableState_ == wanted;
  };
  const char* text = "Nothing to watch or play right now";
  if (isEither(showing)) {
    text = "Enjoy!";
  } else if (videoState_ == ready && playableState_ == ready) {
    text = "A video and a game are ready for you";
  } else if (videoState_ == ready) {
    text = "A video is ready for you";
  } else if (playableState_ == ready) {
    text = "A game is ready for you";
  } else if (isEither(loading)) {
    text = "Looking for something to watch or play…";
  }
  status_.set_text(text);
  watch_.set_sensitive(videoState_ == ready);
  play_.set_sensitive(playableState_ == ready);
  retry_.set_visible(isEither(unavailable) && !isEither(showing));
  bay_.setStill(isEither(showing));
  timeline_.note("game", isVideo ? "video button" : "play button",
                 {{"enabled", state == ready ? "yes" : "no"}, {"text", text}});
}

void GameWindow::showOffers(bool hasWall, bool hasSpecialOffer) {
  wall_.set_sensitive(hasWall);
  specialOffer_.set_sensitive(hasSpecialOffer);
  timeline_.note("game", "offer buttons",
                 {{"wall", hasWall ? "yes" : "no"}, {"special", hasSpecialOffer ? "yes" : "no"}});
}
