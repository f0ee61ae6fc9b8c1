#include "feed.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "ad_layouts.hpp"
#include "article_views.hpp"
#include "column.hpp"

using vantorium::Vantorium;
using vantorium::VantoriumNativeAd;

namespace {

constexpr int columnWidth = 640;  // points
constexpr std::size_t storiesBetweenAds = 2;

std::size_t countAssets(const VantoriumNativeAd& ad, const char* type) {
  const auto hasType = [type](const auto& asset) { return asset->type == type; };
  return static_cast<std::size_t>(std::ranges::count_if(ad.assets, hasType));
}

AdLayout makeLayoutFor(const VantoriumNativeAd& ad, vantorium::Host& host) {
  if (countAssets(ad, "video") > 0) return makeVideoLayout(host);
  const std::size_t pictures = countAssets(ad, "image");
  return pictures > 0 ? makePictureLayout(host, pictures > 1) : makeRowLayout(host);
}

}  // namespace

Feed::Feed(std::shared_ptr<vantorium::Host> host, std::size_t storyCount, std::vector<Place> places,
           Timeline& timeline)
    : host_(std::move(host)), timeline_(timeline), freePlaces_(std::move(places)) {
  for (std::size_t number = 0; number < storyCount; ++number) {
    const Article& article = articles()[number % articles().size()];
    stories_.push_back(makeArticleRow(article, [this, &article] { onOpen(article); }));
    column_.append(*stories_.back());
  }
  column_.add_css_class("feed");
  frame_.set_layout_manager(Column::create(columnWidth));
  frame_.append(column_);
  set_child(frame_);
  set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
  get_vadjustment()->signal_changed().connect(sigc::mem_fun(*this, &Feed::settleLater));
  get_vadjustment()->signal_value_changed().connect(sigc::mem_fun(*this, &Feed::settleLater));
}

void Feed::add(const std::shared_ptr<VantoriumNativeAd>& ad) {
  const auto place = std::ranges::find(freePlaces_, ad->placementID, &Place::placement);
  if (place == freePlaces_.end()) return;
  const bool hasSomethingToShow = !ad->appName.empty() || !ad->assets.empty();
  if (hasSomethingToShow) waiting_.push_back({ad, place->after});
  freePlaces_.erase(place);
  settleLater();
}

void Feed::showAd(std::size_t number) { shownAd_ = number; }

/// The feed may be in the middle of its layout now.
void Feed::settleLater() {
  if (isSettling_ || (waiting_.empty() && shownAd_ == 0)) return;
  isSettling_ = true;
  Glib::signal_idle().connect_once(sigc::mem_fun(*this, &Feed::settle));
}

void Feed::settle() {
  isSettling_ = false;
  if (get_height() == 0) return;  // comes back once it is laid out
  const bool hasInserted = std::erase_if(waiting_, [this](const Waiting& each) { return place(each); }) > 0;
  const bool isComplete = waiting_.empty() && freePlaces_.empty();
  if (isComplete && !hasInserted && shownAd_ > 0) scrollToShownAd();
}

bool Feed::place(const Waiting& waiting) {
  for (std::size_t gap = std::min(waiting.after, stories_.size()); gap <= stories_.size(); ++gap) {
    if (!isFree(gap)) continue;
    insert(*makeCard(waiting.ad), gap);
    timeline_.note("feed", "ad placed",
                   {{"placement", waiting.ad->placementID},
                    {"impression", waiting.ad->impressionID},
                    {"after", std::to_string(gap)}});
    return true;
  }
  return false;
}

/// Whether an ad before the story of this number is below what is seen, and not close to another. What comes
/// after the last story moves nothing in any case.
bool Feed::isFree(std::size_t gap) {
  if (stories_.empty()) return true;
  const bool isCrowded = std::ranges::any_of(ads_, [gap](const auto& ad) {
    return ad.first < gap + storiesBetweenAds && gap < ad.first + storiesBetweenAds;
  });
  if (isCrowded) return false;
  return gap == stories_.size() || distanceFromTop(*stories_[gap]) >= get_height();
}

Gtk::Widget* Feed::makeCard(const std::shared_ptr<VantoriumNativeAd>& ad) {
  const AdLayout layout = makeLayoutFor(*ad, *host_);
  // A video that speaks up by itself makes no friends; a tap on it lets it be heard.
  const auto quiet = std::make_shared<vantorium::VantoriumMediaViewOptions>();
  quiet->shouldMuteVideo = true;
  Vantorium::populateNativeAdView(
      layout.view->view(), ad, {quiet}, [this](bool, const std::optional<vantorium::Error>& error) {
        if (error)
          timeline_.note("completion", "populateNativeAdView", {{"error", error->localizedDescription()}});
      });
  return layout.widget;
}

void Feed::insert(Gtk::Widget& card, std::size_t gap) {
  if (gap == stories_.size()) {
    column_.append(card);
  } else if (Gtk::Widget* const previous = stories_[gap]->get_prev_sibling()) {
    column_.insert_child_after(card, *previous);
  } else {
    column_.prepend(card);
  }
  ads_.emplace(gap, &card);
}

void Feed::scrollToShownAd() {
  const std::size_t number = std::min(std::exchange(shownAd_, 0), ads_.size());
  if (number == 0) return;
  Gtk::Widget& card = *std::next(ads_.begin(), static_cast<std::ptrdiff_t>(number - 1))->second;
  get_vadjustment()->set_value(get_vadjustment()->get_value() + distanceFromTop(card));
}

double Feed::distanceFromTop(Gtk::Widget& widget) {
  double x = 0, y = 0;
  widget.translate_coordinates(*this, 0, 0, x, y);
  return y;
}
