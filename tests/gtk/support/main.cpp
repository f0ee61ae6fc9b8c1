#include <gtest/gtest.h>
#include <gtkmm.h>

#include <cstdio>
#include <cstdlib>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
// Whole stacks, through libraries that keep no frame pointers: suppressions of leaks name what is behind
// them.
extern "C" const char* __asan_default_options() { return "fast_unwind_on_malloc=0"; }
#endif
#endif

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // Tests play the system's services on their own session bus.
  if (const char* const bus = std::getenv("DBUS_SESSION_BUS_ADDRESS"))
    setenv("DBUS_SYSTEM_BUS_ADDRESS", bus, 1);
  // Brings gtkmm up; the tests run the main loop themselves.
  const auto application =
      Gtk::Application::create("com.vantorium.tests", Gio::Application::Flags::NON_UNIQUE);
  if (!gtk_init_check()) {
    std::fputs("The tests of the GTK host need a display; run them under xvfb-run.\n", stderr);
    return 1;
  }
  return RUN_ALL_TESTS();
}
