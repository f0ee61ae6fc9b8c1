#pragma once

#include <string>

#include "protocol/http_client.hpp"

namespace vantorium {

/// One request as its endpoint wants it.
struct HTTPClient::Endpoint {
  std::string method = "GET";
  std::string url = {};
  bool isEncoded = true;  ///< the whole URL is percent-encoded before it is parsed
  bool hasContentType = false;
  bool hasUserAgent = false;
  bool isAuthorized = false;
  std::string body = {};
};

}  // namespace vantorium
