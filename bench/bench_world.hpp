#pragma once

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

#include "facade/client.hpp"
#include "facade/sdk.hpp"
#include "hosts/headless/headless_host.hpp"
#include "sandbox/server.hpp"

namespace vantorium::bench {

/// A folder of this run's own, on the disk that the build lies on.
class Home {
 public:
  Home() {
    std::string name = (std::filesystem::current_path() / "bench-home-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
    path_ = name;
  }
  ~Home() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

inline std::shared_ptr<headless::Host> makeHost(const Home& home, headless::ClockKind clock) {
  headless::Host::Options options;
  options.home = home.path();
  options.clock = clock;
  return std::make_shared<headless::Host>(options);
}

/// An SDK that talks to the service at `baseURL`.
inline std::shared_ptr<Sdk> makeSdk(const std::shared_ptr<headless::Host>& host, const std::string& baseURL) {
  auto sdk = Sdk::make(host);
  ServiceConfiguration configuration;
  configuration.baseURL = baseURL;
  if (const auto error = sdk->setServiceConfiguration(configuration)) {
    throw std::runtime_error(error->localizedDescription());
  }
  return sdk;
}

/// Configures and runs the main loop until that has ended.
inline void configureAndWait(Sdk& sdk, headless::Host& host) {
  bool ended = false;
  std::optional<Error> failure;
  sdk.configure("bench", std::nullopt, nullptr, [&](bool, std::optional<Error> error) {
    failure = std::move(error);
    ended = true;
  });
  host.loop().runUntil([&] { return ended; });
  if (failure || !ended) throw std::runtime_error("configure failed");
}

}  // namespace vantorium::bench
