#include <gtkmm.h>

#include <cstdlib>
#include <iostream>

#include <vantorium/gtk.hpp>
#include <vantorium/vantorium.hpp>

#include "ads.hpp"
#include "coin_game/timeline.hpp"
#include "feed.hpp"
#include "feed_window.hpp"

namespace {

using vantorium::Vantorium;

constexpr int adsInGallery = 5;

struct Options {
  Glib::ustring appID = "news-feed";
  int stories = static_cast<int>(articles().size());
  int ads = -1;  // as the newspaper has them
  int showAd = 0;
  Glib::ustring gallery;
  Glib::ustring serviceURL;
  std::string certificate;
  std::string timeline;
};

/// Throws Glib::Error when the command line is wrong; ends the process after --help.
Options parse(int argc, char** argv) {
  Options options;
  Glib::OptionGroup group("feed", "The newspaper");
  const auto entry = [](const char* name, const char* argument, const char* description) {
    Glib::OptionEntry made;
    made.set_long_name(name);
    made.set_arg_description(argument);
    made.set_description(description);
    return made;
  };
  group.add_entry(entry("app-id", "ID", "The newspaper's identifier with the ad service"), options.appID);
  group.add_entry(entry("articles", "N", "How many stories there are"), options.stories);
  group.add_entry(entry("ads", "N", "So many video ads, spread evenly, instead of one of each kind"),
                  options.ads);
  group.add_entry(entry("show-ad", "N", "Scroll to this ad once all are there"), options.showAd);
  group.add_entry(entry("gallery", "PLACEMENT", "The ads of one placement alone, without stories"),
                  options.gallery);
  group.add_entry(entry("service-url", "URL", "Another ad service, for developers"), options.serviceURL);
  group.add_entry_filename(entry("certificate", "FILE", "A certificate to trust, for developers"),
                           options.certificate);
  group.add_entry_filename(entry("timeline", "FILE", "Note what happens in this file"), options.timeline);
  Glib::OptionContext context;
  context.set_main_group(group);
  context.parse(argc, argv);
  return options;
}

/// Where ads are to stand, by the names that the service knows.
std::vector<Feed::Place> places(const Options& options) {
  if (!options.gallery.empty()) return std::vector(adsInGallery, Feed::Place{options.gallery, 0});
  if (options.ads < 0) return {{"native-video", 6}, {"native-row", 12}, {"native-images", 15}};
  std::vector<Feed::Place> spread;
  spread.reserve(static_cast<std::size_t>(options.ads));
  for (int number = 0; number < options.ads; ++number) {
    spread.push_back(
        {"native-video", static_cast<std::size_t>(options.stories * (2 * number + 1) / (2 * options.ads))});
  }
  return spread;
}

/// Gives the SDK its host and, for developers, another service. None of it can be changed later.
std::shared_ptr<vantorium::Host> startSDK(const Options& options) {
  const bool isDevelopment = !options.serviceURL.empty();
  auto host = vantorium::gtk::makeHost({.applicationID = "org.example.NewsFeed",
                                        .applicationVersion = "1.0",
                                        .treatLoopbackAsOnline = isDevelopment});
  auto error = Vantorium::setHost(host);
  if (!error && isDevelopment) {
    error = Vantorium::setDeveloperSettings({.baseURL = options.serviceURL,
                                             .widgetURL = options.serviceURL,
                                             .trustedCertificate = options.certificate});
  }
  if (!error) return host;
  std::cerr << "news_feed: " << error->localizedDescription() << "\n";
  return nullptr;
}

std::unique_ptr<FeedWindow> openWindow(const Options& options, const std::shared_ptr<vantorium::Host>& host,
                                       Ads& ads, Timeline& timeline) {
  const auto adPlaces = places(options);
  const int stories = options.gallery.empty() ? std::max(0, options.stories) : 0;
  auto feed = std::make_unique<Feed>(host, static_cast<std::size_t>(stories), adPlaces, timeline);
  feed->showAd(static_cast<std::size_t>(std::max(0, options.showAd)));
  ads.onAd = [front = feed.get()](const auto& ad) { front->add(ad); };
  auto window = std::make_unique<FeedWindow>(std::move(feed));
  vantorium::gtk::attach(*host, *window);
  window->present();
  std::map<std::string, int> numberByPlacement;
  for (const auto& place : adPlaces) ++numberByPlacement[place.placement];
  ads.start(options.appID, numberByPlacement);
  return window;
}

int run(const Options& options) {
  Timeline timeline;
  if (!options.timeline.empty() && !timeline.open(options.timeline)) {
    std::cerr << "news_feed: cannot write " << options.timeline << "\n";
    return EXIT_FAILURE;
  }
  const auto app = Gtk::Application::create("org.example.NewsFeed", Gio::Application::Flags::NON_UNIQUE);
  const auto ads = std::make_shared<Ads>(timeline);
  std::unique_ptr<FeedWindow> window;
  int status = EXIT_FAILURE;
  app->signal_activate().connect([&] {
    const auto host = startSDK(options);
    if (!host) return;
    status = EXIT_SUCCESS;
    window = openWindow(options, host, *ads, timeline);
    app->add_window(*window);
  });
  app->run();
  Vantorium::shutdown();
  ads->onAd = nullptr;
  window.reset();
  timeline.note("reader", "ended");
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Glib::init();
    return run(parse(argc, argv));
  } catch (const Glib::Error& error) {
    std::cerr << "news_feed: " << error.what() << " (try --help)\n";
    return EXIT_FAILURE;
  }
}
