#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "platform/net/http_session.hpp"
#include "sandbox/server.hpp"
#include "support/temporary_directory.hpp"

namespace vantorium::testing {

inline constexpr auto patience = std::chrono::seconds(30);

struct Reply : HTTPAnswer {
  /// The body, or the error, as one text.
  std::string text() const { return body ? std::string(body->bytes()) : error->errorMessage(); }
  int code() const { return error && error->domain() == "curl" ? error->code() : 0; }
};

inline std::future<Reply> start(HTTPSession& session, HTTPRequest request) {
  auto promise = std::make_shared<std::promise<Reply>>();
  auto reply = promise->get_future();
  session.send(std::move(request), [promise](HTTPAnswer answer) {
    EXPECT_NE(answer.body.has_value(), answer.error.has_value());
    promise->set_value({std::move(answer)});  // throws when called twice
  });
  return reply;
}

inline Reply waitFor(std::future<Reply> reply) {
  if (reply.wait_for(patience) == std::future_status::ready) return reply.get();
  ADD_FAILURE() << "the completion was not called";
  return {};
}

/// A service and a session.
class HTTPWorld : public ::testing::Test {
 protected:
  void SetUp() override {
    server.start();
    server.setAnswer("/hello", 200, "text/plain", "hello");
  }

  HTTPSession::Configuration configuration(HTTPLimits limits = {}) const {
    return {.spoolDirectory = directory.path() / "spool", .trustedCertificate = {}, .limits = limits};
  }
  std::string url(const std::string& target) const { return server.baseURL() + target; }
  Reply fetch(const std::string& target) { return waitFor(start(session, {.url = url(target)})); }
  nlohmann::json lastRequest() const { return server.requests().back(); }
  bool nothingSpooled() const {
    return !std::filesystem::exists(directory.path() / "spool") ||
           std::filesystem::is_empty(directory.path() / "spool");
  }

  const TemporaryDirectory directory;
  sandbox::Server server{sandbox::Options{}};
  HTTPSession session{configuration({.idleTimeout = patience})};
};

}  // namespace vantorium::testing
