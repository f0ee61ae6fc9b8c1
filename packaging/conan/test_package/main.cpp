// Links both libraries and asks each for something that needs no service.
#include <filesystem>
#include <iostream>

#include <vantorium/headless.hpp>
#include <vantorium/vantorium.hpp>
#include <vantorium/version.h>

using vantorium::Vantorium;

int main() {
  const auto home = std::filesystem::temp_directory_path() / "vantorium-package";
  Vantorium::setHost(vantorium::headless::makeHost({.home = home}));
  bool isRefused = false;
  Vantorium::showCampaign("anywhere",
                          [&](bool success, const auto& error) { isRefused = !success && error; });
  Vantorium::shutdown();
  std::filesystem::remove_all(home);
  if (!isRefused) {
    std::cerr << "an ad was shown before anything was configured\n";
    return 1;
  }
  std::cout << "ready with " << VANTORIUM_VERSION << '\n';
}
