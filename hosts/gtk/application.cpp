#include "hosts/gtk/application.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "platform/foundation/url.hpp"

namespace vantorium::gtk {

namespace {

struct Opening {
  std::function<void(bool)> completion;
};

void opened(GObject*, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<Opening> opening(static_cast<Opening*>(data));
  opening->completion(g_app_info_launch_default_for_uri_finish(result, nullptr));
}

}  // namespace

DesktopApplication::DesktopApplication(std::string storeURL, std::function<void(std::string_view line)> print)
    : storeURL_(std::move(storeURL)),
      print_(std::move(print)),
      sensor_([this] { post(ui::ApplicationEvent::deviceOrientationDidChange); }) {}

void DesktopApplication::attach(Gtk::Window& window) {
  const bool isKnown = std::any_of(stages_.begin(), stages_.end(),
                                   [&](const auto& stage) { return stage->isOf(window.gobj()); });
  if (isKnown) return;
  Stage::Events events{[this](Stage& stage) { closed(stage); }, [this] { updateForeground(); }};
  stages_.push_back(std::make_unique<Stage>(window, *this, images_, std::move(events)));
  isInForeground_ |= stages_.back()->isInForeground();
}

bool DesktopApplication::isCovered(GtkWindow* window) const {
  return std::any_of(stages_.begin(), stages_.end(),
                     [&](const auto& stage) { return stage->isOf(window) && stage->hasAd(); });
}

void DesktopApplication::closed(Stage& stage) {
  const auto gone =
      std::find_if(stages_.begin(), stages_.end(), [&](const auto& each) { return each.get() == &stage; });
  if (gone == stages_.end()) return;
  // No longer among those that can take an ad: what ends with the window may at once show another.
  const std::unique_ptr<Stage> closing = std::move(*gone);
  stages_.erase(gone);
  if (const auto screen = closing->root()->presentedViewController()) screen->dismiss(false);
  updateForeground();
}

Stage* DesktopApplication::stageWithAd() const {
  const auto found =
      std::find_if(stages_.begin(), stages_.end(), [](const auto& stage) { return stage->hasAd(); });
  return found != stages_.end() ? found->get() : nullptr;
}

Stage* DesktopApplication::keyStage() const {
  Stage* key = nullptr;
  for (const auto& stage : stages_) {
    if (stage->isActive()) return stage.get();
    if (stage->isVisible()) key = stage.get();
  }
  return key;
}

std::shared_ptr<ui::ViewController> DesktopApplication::rootViewController() {
  Stage* const stage = keyStage();
  return stage != nullptr ? stage->root() : nullptr;
}

const Stage* DesktopApplication::screenStage() const {
  const Stage* const showing = stageWithAd();
  return showing != nullptr ? showing : keyStage();
}

ui::Rect DesktopApplication::screenBounds() const {
  const Stage* const stage = screenStage();
  return stage != nullptr ? stage->bounds() : ui::Rect{};
}

bool DesktopApplication::isWide() const {
  const ui::Rect screen = screenBounds();
  return screen.width > screen.height;
}

ui::InterfaceOrientation DesktopApplication::interfaceOrientation() const {
  return isWide() ? ui::InterfaceOrientation::landscapeLeft : ui::InterfaceOrientation::portrait;
}

ui::DeviceOrientation DesktopApplication::deviceOrientation() const {
  const ui::DeviceOrientation reading = sensor_.orientation();
  if (sensor_.isHeld()) return reading;
  const bool isMonitorWide = screenStage() != nullptr && screenStage()->isMonitorWide();
  if (reading == ui::DeviceOrientation::portrait) isNaturalMonitorWide_ = isMonitorWide;
  // Unknown until the device was seen in its natural way; desktops turn unless their user locked them.
  const bool isTurned = isNaturalMonitorWide_ ? isMonitorWide != *isNaturalMonitorWide_ : true;
  return heldAgainstWindow(reading, isTurned, isWide());
}

void DesktopApplication::didPresent(ui::ViewController&, bool) { sensor_.setClaimed(true); }
void DesktopApplication::didDismiss(ui::ViewController&, bool) {
  sensor_.setClaimed(stageWithAd() != nullptr);
}

// The application is where its ad is; without one, wherever a window of it can be seen.
void DesktopApplication::updateForeground() {
  const Stage* const showing = stageWithAd();
  const bool isInForeground = showing != nullptr
                                  ? showing->isInForeground()
                                  : std::any_of(stages_.begin(), stages_.end(),
                                                [](const auto& stage) { return stage->isInForeground(); });
  if (isInForeground == isInForeground_) return;
  isInForeground_ = isInForeground;
  post(isInForeground ? ui::ApplicationEvent::willEnterForeground : ui::ApplicationEvent::didEnterBackground);
}

std::string DesktopApplication::storeURL(const std::string& productID) const {
  static constexpr std::string_view placeholder = "{id}";
  char* const escaped = g_uri_escape_string(productID.c_str(), nullptr, FALSE);
  std::string url = storeURL_;
  const auto position = url.find(placeholder);
  if (position != std::string::npos && escaped != nullptr) url.replace(position, placeholder.size(), escaped);
  g_free(escaped);
  return url;
}

void DesktopApplication::performOpenURL(const std::string& url, std::function<void(bool opened)> completion) {
  const auto display = Gdk::Display::get_default();
  GdkAppLaunchContext* const context =
      display ? gdk_display_get_app_launch_context(display->gobj()) : nullptr;
  const auto told = [print = print_, url, completion = std::move(completion)](bool isOpened) {
    if (!isOpened) {
      print(fmt::format("VANTORIUM: no application on this machine opens \"{}\".",
                        url.substr(0, url.find('?'))));
    }
    if (completion) completion(isOpened);
  };
  g_app_info_launch_default_for_uri_async(url.c_str(), G_APP_LAUNCH_CONTEXT(context), nullptr, opened,
                                          new Opening{told});
  if (context != nullptr) g_object_unref(context);
}

void DesktopApplication::refusedURL(const std::string& url) {
  constexpr std::size_t longest = 200;
  const std::string shown = url.size() > longest ? url.substr(0, longest) + "…" : url;
  print_(fmt::format(
      "VANTORIUM: an ad asked to open \"{}\", which is refused: it does not lead out of this machine.",
      shown));
}

}  // namespace vantorium::gtk
