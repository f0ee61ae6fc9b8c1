#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include <vantorium/headless.h>

#include "c_api/told.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "sandbox/server.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium::testing {

/// A program that knows the C API alone, on a headless host, and an ad service.
struct CWorld {
  CWorld() {
    server.start();
    EXPECT_TRUE(vantorium_set_host(host)) << textOf(vantorium_last_error());
    EXPECT_TRUE(
        vantorium_set_developer_settings(server.baseURL().c_str(), server.baseURL().c_str(), nullptr));
    vantorium_set_auto_caching(false);
  }
  ~CWorld() { vantorium_shutdown(); }

  bool await(const std::function<bool()>& done) {
    const auto ask = [](void* data) { return (*static_cast<const std::function<bool()>*>(data))(); };
    return vantorium_headless_run_until(host, ask, const_cast<std::function<bool()>*>(&done), 30);
  }
  bool configure() {
    Told told;
    vantorium_configure("app", nullptr, nullptr, Told::complete, &told, Told::free);
    return await([&] { return told.isOver(); }) && told.success;
  }
  bool precache(const char* placement) {
    Told told;
    vantorium_precache_campaigns(placement, nullptr, Told::complete, &told, Told::free);
    return await([&] { return told.isOver(); }) && told.success;
  }
  std::size_t events(const std::string& kind) const {
    std::size_t found = 0;
    for (const auto& event : server.events()) found += event["kind"] == kind;
    return found;
  }

  TemporaryDirectory home;
  Mutex answering;  ///< while a test holds it, the service answers nothing
  sandbox::Server server{
      sandbox::Options{.onRecord = [this](const nlohmann::json&) { const MutexLock turn(answering); }}};
  Owned<vantorium_host> host{vantorium_headless_host_new(home.path().c_str(), true)};
};

}  // namespace vantorium::testing
