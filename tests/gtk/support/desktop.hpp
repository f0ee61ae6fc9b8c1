#pragma once

#include <gtest/gtest.h>
#include <gtkmm.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "hosts/gtk/host.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium::test {

/// Runs the main loop until `condition` holds; false when it does not within a generous time.
[[nodiscard]] bool waitFor(const std::function<bool()>& condition);
/// Lets everything that is due now happen.
void settle();

/// A host with one attached window of 400 × 600 that has a button of the application's own, which holds the
/// focus.
class DesktopTest : public ::testing::Test {
 protected:
  DesktopTest();
  ~DesktopTest() override;

  /// Lets what is due happen until the window has been laid out and drawn.
  void draw();
  /// Shows a screen over the window and waits until it is there.
  void present(const std::shared_ptr<ui::ViewController>& screen);
  /// The widget at a point of the window, as a click would find it.
  Gtk::Widget* widgetAt(double x, double y);

  /// Clicks at a point of the window with the display's own mouse (xdotool) and waits until `condition`
  /// holds.
  [[nodiscard]] bool click(double x, double y, const std::function<bool()>& condition);
  /// Writes a file below the test's folder and returns its path.
  std::string write(const std::string& name, const std::string& text) const;

  testing::TemporaryDirectory folder;
  std::shared_ptr<gtk::DesktopHost> host;
  Gtk::Window window;
  Gtk::Button content{"Play the game"};
};

}  // namespace vantorium::test
