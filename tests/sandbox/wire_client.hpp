#pragma once

#include <curl/curl.h>
#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/server.hpp"

/// A client of the local ad service that is not the SDK's own: curl, once per question.
namespace vantorium::sandbox::wire {

using nlohmann::json;

struct Reply {
  CURLcode code;
  long status;
  std::string contentType;
  std::string body;
  json parsed() const { return json::parse(body, nullptr, false); }
};

struct Ask {
  std::string url;
  std::vector<std::string> headers = {};
  std::optional<std::string> post = {};
  long timeout = 20;
  std::string certificates = {};
};

inline Reply send(const Ask& ask) {
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), &curl_easy_cleanup);
  Reply reply{};
  curl_slist* headers = nullptr;
  for (const auto& header : ask.headers) headers = curl_slist_append(headers, header.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_URL, ask.url.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, ask.timeout);
  curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &reply.body);
  curl_easy_setopt(
      curl.get(), CURLOPT_WRITEFUNCTION, +[](char* data, size_t size, size_t count, void* out) {
        static_cast<std::string*>(out)->append(data, size * count);
        return size * count;
      });
  if (ask.post) {
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(ask.post->size()));
    curl_easy_setopt(curl.get(), CURLOPT_COPYPOSTFIELDS, ask.post->c_str());
  }
  if (!ask.certificates.empty()) {
    const curl_blob blob{const_cast<char*>(ask.certificates.data()), ask.certificates.size(), CURL_BLOB_COPY};
    curl_easy_setopt(curl.get(), CURLOPT_CAINFO_BLOB, &blob);
  }
  reply.code = curl_easy_perform(curl.get());
  curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &reply.status);
  const char* contentType = nullptr;
  curl_easy_getinfo(curl.get(), CURLINFO_CONTENT_TYPE, &contentType);
  if (contentType != nullptr) reply.contentType = contentType;
  curl_slist_free_all(headers);
  return reply;
}

/// What a device says of itself, as the service wants it.
inline json deviceBody() {
  return {{"appId", "a"},          {"userId", "u"},     {"osVersion", "1"},    {"manufacturer", "apple"},
          {"sWidth", 390.0},       {"sHeight", 844},    {"platform", "Phone"}, {"model", "P1"},
          {"rooted", false},       {"timezone", "UTC"}, {"volumeLevel", 0.5},  {"batteryLevel", 1.0},
          {"batteryState", "FULL"}};
}

/// A service that has started, and the questions that most tests begin with.
class SandboxServerTest : public ::testing::Test {
 protected:
  void SetUp() override { server.start(); }

  Reply init(const json& body = deviceBody()) {
    return send({server.baseURL() + "/api/init", {"Content-Type: application/json"}, body.dump(2)});
  }
  std::string bearer() { return "Authorization: Bearer " + init().parsed().value("token", ""); }
  Reply campaigns(const std::string& authorization, const std::string& query) {
    return adRequest("/api/campaigns?" + query, authorization);
  }
  Reply native(const std::string& authorization, const std::string& query) {
    return adRequest("/api/sdk/native?" + query, authorization);
  }
  Reply adRequest(const std::string& target, const std::string& authorization) {
    return send(
        {server.baseURL() + target, {"Content-Type: application/json", "User-Agent: Phone", authorization}});
  }

  Server server{Options{}};
};

}  // namespace vantorium::sandbox::wire
