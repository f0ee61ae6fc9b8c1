#include <gtkmm.h>

#include <cstdlib>
#include <iostream>

#include <vantorium/gtk.hpp>
#include <vantorium/vantorium.hpp>

#include "ads.hpp"
#include "device_menu.hpp"
#include "game_window.hpp"
#include "timeline.hpp"

namespace {

using vantorium::Vantorium;

struct Options {
  Glib::ustring appID = "coin-game";
  Glib::ustring videoPlacement = "rewarded-main";
  Glib::ustring playablePlacement = "playable-rewarded";
  Glib::ustring wallPlacement = "wall-main";
  Glib::ustring popupPlacement = "offer-main";
  Glib::ustring serviceURL;
  std::string certificate;
  std::string timeline;
  bool hasDeviceMenu = false;
};

/// Throws Glib::Error when the command line is wrong; ends the process after --help.
Options parse(int argc, char** argv) {
  Options options;
  Glib::OptionGroup group("game", "The game");
  const auto entry = [](const char* name, const char* argument, const char* description) {
    Glib::OptionEntry made;
    made.set_long_name(name);
    if (argument != nullptr) made.set_arg_description(argument);
    made.set_description(description);
    return made;
  };
  group.add_entry(entry("app-id", "ID", "The game's identifier with the ad service"), options.appID);
  group.add_entry(entry("placement", "ID", "Where in the game the video is shown"), options.videoPlacement);
  group.add_entry(entry("play-placement", "ID", "Where in the game another game is played"),
                  options.playablePlacement);
  group.add_entry(entry("service-url", "URL", "Another ad service, for developers"), options.serviceURL);
  group.add_entry_filename(entry("certificate", "FILE", "A certificate to trust, for developers"),
                           options.certificate);
  group.add_entry_filename(entry("timeline", "FILE", "Note what happens in this file"), options.timeline);
  group.add_entry(entry("wall-placement", "ID", "Where in the game the offer wall is shown"),
                  options.wallPlacement);
  group.add_entry(entry("offer-placement", "ID", "Where in the game special offers are shown"),
                  options.popupPlacement);
  group.add_entry(entry("device-menu", nullptr, "A menu to turn the device with, for developers"),
                  options.hasDeviceMenu);
  Glib::OptionContext context;
  context.set_main_group(group);
  context.parse(argc, argv);
  return options;
}

/// Gives the SDK its host and, for developers, another service. None of it can be changed later.
std::shared_ptr<vantorium::Host> startSDK(const Options& options) {
  const bool isDevelopment = !options.serviceURL.empty();
  auto host = vantorium::gtk::makeHost({.applicationID = "org.example.CoinGame",
                                        .applicationVersion = "1.0",
                                        .treatLoopbackAsOnline = isDevelopment});
  auto error = Vantorium::setHost(host);
  if (!error && isDevelopment) {
    error = Vantorium::setDeveloperSettings({.baseURL = options.serviceURL,
                                             .widgetURL = options.serviceURL,
                                             .trustedCertificate = options.certificate});
  }
  if (!error) return host;
  std::cerr << "coin_game: " << error->localizedDescription() << "\n";
  return nullptr;
}

int play(const Options& options) {
  Timeline timeline;
  if (!options.timeline.empty() && !timeline.open(options.timeline)) {
    std::cerr << "coin_game: cannot write " << options.timeline << "\n";
    return EXIT_FAILURE;
  }
  const auto app = Gtk::Application::create("org.example.CoinGame", Gio::Application::Flags::NON_UNIQUE);
  const auto ads = std::make_shared<Ads>(timeline);
  std::unique_ptr<GameWindow> window;
  int status = EXIT_FAILURE;
  app->signal_activate().connect([&] {
    const auto host = startSDK(options);
    if (!host) return;
    status = EXIT_SUCCESS;
    const GameWindow::Placements placements{options.videoPlacement, options.playablePlacement,
                                            options.wallPlacement, options.popupPlacement};
    window = std::make_unique<GameWindow>(ads, placements, timeline);
    vantorium::gtk::attach(*host, *window);
    addDeviceMenu(*app, host);
    window->set_show_menubar(options.hasDeviceMenu);
    app->add_window(*window);
    window->present();
    ads->start(options.appID, {placements.video, placements.playable});
  });
  app->run();
  Vantorium::shutdown();
  window.reset();
  timeline.note("game", "ended");
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Glib::init();
    return play(parse(argc, argv));
  } catch (const Glib::Error& error) {
    std::cerr << "coin_game: " << error.what() << " (try --help)\n";
    return EXIT_FAILURE;
  }
}
