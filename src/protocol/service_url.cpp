#include "protocol/service_url.hpp"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <string_view>
#include <system_error>

#include "platform/foundation/url.hpp"

namespace vantorium {

namespace {

bool isLoopback(const std::string& host) {
  in_addr address{};
  if (inet_pton(AF_INET, host.c_str(), &address) == 1) return ntohl(address.s_addr) >> 24 == 127;
  return host == "localhost";
}

/// Whether the text after a host is a port or nothing at all.
bool isPort(std::string_view text) {
  if (text.empty()) return true;
  text.remove_prefix(1);
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  return error == std::errc() && end == text.data() + text.size() && port != 0;
}

const char* flawOf(const std::string& text) {
  // Requests to the service percent-encode their whole URL, this address included.
  if (urlEncodedString(text) != text)
    return "has characters that percent-encoding changes, \"[\" for example";
  const auto url = URL::parse(text);
  if (!url || url->host().empty()) return "is not a URL with a scheme and a host";
  if (url->scheme() != "https" && url->scheme() != "http") return "is neither https nor http";
  if (url->scheme() == "http" && !isLoopback(url->host()))
    return "is http, which is for this machine only: use https";
  const std::string_view authority = std::string_view(text).substr(url->scheme().size() + 3);
  if (authority.find_first_of("/?#@") != std::string_view::npos) return "has more than scheme, host and port";
  if (!isPort(authority.substr(url->host().size()))) return "has a port that is not from 1 to 65535";
  return nullptr;
}

}  // namespace

std::optional<Error> checkServiceURL(const std::string& url) {
  const char* flaw = flawOf(url);
  if (flaw == nullptr) return std::nullopt;
  return VantoriumError::internalError(
      fmt::format(R"(The service address "{}" {}; give one like "https://ads.example.com".)", url, flaw));
}

}  // namespace vantorium
