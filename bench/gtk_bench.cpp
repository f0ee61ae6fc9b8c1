// Measures how long the main thread is held while a native ad is put into a view of GTK widgets, and prints
// it as JSON: milliseconds of the median, of the 99th of a hundred, and of the very first.

#include <fmt/format.h>
#include <gtkmm.h>

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include <vantorium/gtk.hpp>
#include <vantorium/gtk_native_ads.hpp>

#include "facade/sdk.hpp"
#include "native_ads/native_ad_view.hpp"

namespace vantorium::bench {
namespace {

constexpr int fillings = 400;
const std::string catalogue = VANTORIUM_SOURCE_DIR "/tools/sandbox/catalogue/";

std::shared_ptr<VantoriumNativeAdAsset> asset(const char* type, const std::string& file) {
  auto made = std::make_shared<VantoriumNativeAdAsset>();
  made->type = type;
  made->filePath = made->internalFilePath = catalogue + file;
  return made;
}

/// A fresh record, so that nothing of it is known yet, with every file on disk.
std::shared_ptr<VantoriumNativeAd> makeAd(bool hasVideo, int number) {
  auto ad = std::make_shared<VantoriumNativeAd>();
  ad->appName = fmt::format("Orbit Courier {}", number);
  ad->appDeveloper = "Small Moon Games";
  ad->appDescription = "Fly parcels from planet to planet, and land them on the right doorstep.";
  ad->callToActionText = "Play";
  ad->rating = 4.5;
  ad->reviewsCount = number;
  ad->appIconFilePath = catalogue + "static/native/orbit-courier-icon.png";
  if (hasVideo) ad->assets.push_back(asset("video", "media/orbit-courier.mp4"));
  ad->assets.push_back(asset("image", "static/native/orbit-courier-village.jpg"));
  return ad;
}

struct Layout {
  explicit Layout(Host& host) : view(host) {
    icon.set_size_request(48, 48);
    image.set_size_request(-1, 120);
    media.set_size_request(-1, 200);
    const std::vector<std::pair<const char*, Gtk::Widget*>> outlets{
        {"appNameLabel", &name},
        {"appDeveloperLabel", &developer},
        {"appDescriptionLabel", &description},
        {"reviewsLabel", &reviews},
        {"iconImageView", &icon},
        {"imageView", &image},
        {"callToActionButton", &button},
        {"mediaView", &media},
        {"ratingView", &rating},
    };
    for (const auto& [outlet, widget] : outlets) {
      view.append(*widget);
      if (const auto error = view.connectOutlet(outlet, *widget))
        throw std::runtime_error(error->localizedDescription());
    }
  }
  gtk::NativeAdView view;
  Gtk::Label name, developer, description, reviews;
  Gtk::Picture icon, image;
  Gtk::Button button;
  Gtk::Box media, rating;
};

void settle() {
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
}

nlohmann::json fill(Sdk& sdk, Layout& layout, bool hasVideo) {
  std::vector<double> milliseconds;
  for (int number = 0; number < fillings; ++number) {
    const auto ad = makeAd(hasVideo, number);
    const auto start = std::chrono::steady_clock::now();
    sdk.populateNativeAdView(layout.view.view(), ad, {}, [](bool success, const auto& error) {
      if (!success) throw std::runtime_error(error->localizedDescription());
    });
    milliseconds.push_back(
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    settle();
  }
  const double first = milliseconds.front();
  std::sort(milliseconds.begin(), milliseconds.end());
  return {{"median_ms", milliseconds[fillings / 2]},
          {"p99_ms", milliseconds[fillings * 99 / 100]},
          {"first_ms", first}};
}

int run(const std::string& home) {
  // Before GTK reads it: nothing of the user's is touched.
  Glib::setenv("XDG_CACHE_HOME", home);
  Glib::setenv("XDG_CONFIG_HOME", home);
  const auto application =
      Gtk::Application::create("com.vantorium.bench", Gio::Application::Flags::NON_UNIQUE);
  application->signal_activate().connect([&] {
    const auto host = gtk::makeHost({.applicationID = "com.vantorium.bench"});
    const auto sdk = Sdk::make(host);
    sdk->context()->updateFlags([](SdkContext::Flags& flags) { flags.isConfigured = true; });
    Gtk::Window window;
    window.set_default_size(400, 700);
    Layout layout(*host);
    window.set_child(layout.view);
    window.present();
    settle();
    const nlohmann::json result{{"pictures", fill(*sdk, layout, false)}, {"video", fill(*sdk, layout, true)}};
    fmt::print("{}\n", result.dump());
    window.unset_child();
    sdk->shutdown();
  });
  return application->run();
}

}  // namespace
}  // namespace vantorium::bench

int main(int argc, char** argv) {
  if (argc != 2) {
    fmt::print(stderr, "usage: vantorium_bench_gtk FOLDER-TO-WRITE-TO\n");
    return 2;
  }
  return vantorium::bench::run(argv[1]);
}
