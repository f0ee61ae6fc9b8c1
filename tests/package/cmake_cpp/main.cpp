// An application outside the tree: makes a headless host, meets the service at the given address and says so.
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

#include <vantorium/headless.hpp>
#include <vantorium/vantorium.hpp>
#include <vantorium/version.h>

using vantorium::Vantorium;

namespace {

/// What went wrong, or nothing once the service has answered.
std::optional<std::string> configureAt(const std::string& service, vantorium::Host& host) {
  std::optional<std::string> outcome;
  Vantorium::configure("package-consumer", [&](bool success, const std::optional<vantorium::Error>& error) {
    outcome = success ? "" : error ? error->localizedDescription() : "refused without an error";
  });
  if (!vantorium::headless::runUntil(host, [&] { return outcome.has_value(); }))
    return "no answer from " + service;
  return outcome->empty() ? std::nullopt : outcome;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: consumer SERVICE HOME\n";
    return 2;
  }
  const std::string service = argv[1];
  const auto host = vantorium::headless::makeHost({.home = argv[2], .virtualTime = false});
  if (const auto error = Vantorium::setHost(host)) {
    std::cerr << error->localizedDescription() << '\n';
    return 1;
  }
  Vantorium::setDeveloperSettings({.baseURL = service, .widgetURL = service, .trustedCertificate = {}});
  const auto problem = configureAt(service, *host);
  Vantorium::shutdown();
  if (problem) {
    std::cerr << "not ready: " << *problem << '\n';
    return 1;
  }
  std::cout << "ready with " << VANTORIUM_VERSION << '\n';
}
