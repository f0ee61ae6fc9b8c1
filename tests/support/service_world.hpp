#pragma once

#include <algorithm>
#include <chrono>
#include <fstream>
#include <future>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "context/sdk_context.hpp"
#include "device/init_request_builder.hpp"
#include "facade/client.hpp"
#include "hosts/headless/headless_host.hpp"
#include "sandbox/server.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium {

inline void PrintTo(const Error& error, std::ostream* stream) { *stream << error.localizedDescription(); }

}  // namespace vantorium

namespace vantorium::testing {

/// What a completion is called with. A second call ends the test program.
template <typename... Results>
class Outcome {
 public:
  auto completion() {
    return [promise = promise_](Results... results) { promise->set_value({std::move(results)...}); };
  }
  bool isThere() const { return future_.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }
  std::tuple<Results...> get() {
    if (future_.wait_for(std::chrono::seconds(30)) != std::future_status::ready)
      throw std::runtime_error("the completion was not called");
    return future_.get();
  }

 private:
  std::shared_ptr<std::promise<std::tuple<Results...>>> promise_ =
      std::make_shared<std::promise<std::tuple<Results...>>>();
  std::future<std::tuple<Results...>> future_ = promise_->get_future();
};

/// A device, an ad service, and the SDK's services between the two.
struct ServiceWorld {
 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable reported_;
  std::vector<std::string> reports_;
  std::shared_ptr<std::promise<void>> contextGone_ = std::make_shared<std::promise<void>>();

 public:
  ServiceWorld() { server.start(); }
  ~ServiceWorld() {
    shutdown();
    // The host belongs to this thread, so whatever still ends on others has to let go of it first.
    client_ = nullptr;
    context = nullptr;
    contextGone_->get_future().wait();
  }

  TemporaryDirectory home;
  std::shared_ptr<headless::Host> host =
      std::make_shared<headless::Host>(headless::Host::Options{.home = home.path()});
  std::shared_ptr<SdkContext> context = makeContext();
  sandbox::Server server{sandbox::Options{}};
  ServiceConfiguration configuration;  ///< of the client, but for the address

  /// Made on first use, so that a test can prepare the device.
  const std::shared_ptr<const Client>& client() {
    configuration.baseURL = server.baseURL();
    if (!client_) client_ = std::make_shared<Client>(Client::make(context, configuration));
    return client_;
  }
  CacheClient cache() { return client()->cacheClient; }
  /// What the SDK does at its end.
  void shutdown() {
    context->end();
    if (client_) client_->session->shutdown();
  }
  /// A client with a session token.
  const std::shared_ptr<const Client>& configuredClient() {
    Outcome<bool, std::optional<HTTPClient::Placements>, std::optional<Error>> setUp;
    client()->httpClient->setUp(initBody(), setUp.completion());
    setUp.get();
    return client_;
  }
  nlohmann::json initBody() {
    client()->userDefaultsClient->recordInstallDate();
    return InitRequestBuilder::requestBody(*host, *client()->userDefaultsClient->defaults(), "app", "user",
                                           {});
  }

  std::filesystem::path cacheRoot() const { return host->directories().caches / "com.vantorium"; }

  /// Error reports so far, each a message and the stack that led to it.
  std::vector<std::string> reports() const {
    const std::lock_guard lock(mutex_);
    return reports_;
  }
  /// Waits for so many reports: some are made after the completion has been called.
  std::vector<std::string> awaitReports(std::size_t count) const {
    std::unique_lock lock(mutex_);
    reported_.wait_for(lock, std::chrono::seconds(30), [&] { return reports_.size() >= count; });
    return reports_;
  }

  /// Requests to paths that start with `prefix`.
  std::vector<nlohmann::json> requests(const std::string& prefix = "/") const {
    std::vector<nlohmann::json> found;
    for (auto& request : server.requests())
      if (request["target"].get<std::string>().starts_with(prefix)) found.push_back(request);
    return found;
  }

 private:
  std::shared_ptr<SdkContext> makeContext() {
    const std::shared_ptr<SdkContext> made(new SdkContext(host), [isGone = contextGone_](SdkContext* gone) {
      delete gone;
      isGone->set_value();
    });
    made->setErrorReporter([this](std::string text) {
      const std::lock_guard lock(mutex_);
      reports_.push_back(std::move(text));
      reported_.notify_all();
    });
    return made;
  }

  std::shared_ptr<const Client> client_;
};

}  // namespace vantorium::testing
