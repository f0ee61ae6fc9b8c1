#include "gtk/support/desktop.hpp"

#include <chrono>
#include <cmath>
#include <fstream>

namespace vantorium::test {

namespace fs = std::filesystem;

bool waitFor(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  // Wakes the loop for conditions that change without it.
  const guint waker = g_timeout_add(
      20, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
  bool holds = condition();
  while (!holds && std::chrono::steady_clock::now() < deadline) {
    g_main_context_iteration(nullptr, TRUE);
    holds = condition();
  }
  g_source_remove(waker);
  return holds;
}

void settle() {
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
}

DesktopTest::DesktopTest() {
  host = std::make_shared<gtk::DesktopHost>(
      gtk::HostOptions{.applicationID = "com.vantorium.tests", .treatLoopbackAsOnline = true});
  window.set_default_size(400, 600);
  window.set_child(content);
  gtk::attach(*host, window);
  window.set_visible(true);
  content.grab_focus();
  EXPECT_TRUE(
      waitFor([&] { return host->application().screenBounds().width == 400 && content.get_mapped(); }));
  settle();
}

DesktopTest::~DesktopTest() {
  window.destroy();
  settle();
}

void DesktopTest::draw() {
  settle();
  const auto clock = window.get_frame_clock();
  if (!clock || !window.get_mapped()) return;
  bool isDrawn = false;
  const gulong handler = g_signal_connect_swapped(clock->gobj(), "after-paint",
                                                  G_CALLBACK(+[](bool* drawn) { *drawn = true; }), &isDrawn);
  clock->request_phase(Gdk::FrameClock::Phase::PAINT);
  EXPECT_TRUE(waitFor([&] { return isDrawn; }));
  g_signal_handler_disconnect(clock->gobj(), handler);
  settle();
}

void DesktopTest::present(const std::shared_ptr<ui::ViewController>& screen) {
  const auto root = host->application().rootViewController();
  ASSERT_NE(root, nullptr);
  root->present(screen, false);
  draw();
}

std::string DesktopTest::write(const std::string& name, const std::string& text) const {
  const fs::path file = folder.path() / name;
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << text;
  return file.string();
}

bool DesktopTest::click(double x, double y, const std::function<bool()>& condition) {
  double left = 0, top = 0;
  window.get_surface_transform(left, top);
  Glib::spawn_async("",
                    std::vector<std::string>{"xdotool", "mousemove", std::to_string(std::lround(x + left)),
                                             std::to_string(std::lround(y + top)), "click", "1"},
                    Glib::SpawnFlags::SEARCH_PATH);
  return waitFor(condition);
}

Gtk::Widget* DesktopTest::widgetAt(double x, double y) { return window.pick(x, y); }

}  // namespace vantorium::test
