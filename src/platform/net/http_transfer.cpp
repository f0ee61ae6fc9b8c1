#include "platform/net/http_transfer.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"
#include "platform/net/http_error.hpp"

namespace vantorium {

namespace {

constexpr const char* protocols = "http,https";
constexpr long receiveBuffer = 64L * 1024;

/// Proxies are for the outside: whatever the environment says, this machine is spoken to directly.
std::string hostsWithoutProxy() {
  const char* given = std::getenv("no_proxy");
  if (given == nullptr) given = std::getenv("NO_PROXY");
  std::string own = "localhost,127.0.0.0/8,::1";
  if (given == nullptr || *given == '\0') return own;
  return std::string_view(given) == "*" ? given : fmt::format("{},{}", given, own);
}

bool holdsLineBreak(std::string_view text) {
  return text.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos;
}

Error headersTooLarge(const std::string& url, const HTTPLimits& limits) {
  const auto parsed = URL::parse(url);
  return Error::platform("curl", CURLE_RECV_ERROR,
                         fmt::format("The header lines that {} sent are longer than the {} bytes accepted.",
                                     parsed ? parsed->host() : url, limits.headerBytes));
}

HTTPLimits limitsOf(const HTTPRequest& request, HTTPLimits limits) {
  limits.bodyBytes = std::min(limits.bodyBytes, request.mostBodyBytes.value_or(limits.bodyBytes));
  return limits;
}

}  // namespace

std::optional<Error> HTTPTransfer::check(const HTTPRequest& request, const HTTPLimits& limits) {
  const auto url = URL::parse(request.url);
  if (!url || url->scheme().empty()) {
    return Error::platform("curl", CURLE_URL_MALFORMAT,
                           fmt::format("\"{}\" is not a complete http or https address.", request.url));
  }
  if (url->scheme() != "http" && url->scheme() != "https") {
    return Error::platform("curl", CURLE_UNSUPPORTED_PROTOCOL,
                           fmt::format("\"{}\" is neither an http nor an https address.", request.url));
  }
  for (const auto& [name, value] : request.headers) {
    if (!holdsLineBreak(name) && !holdsLineBreak(value)) continue;
    return httpError(CURLE_BAD_FUNCTION_ARGUMENT, request.url, limits,
                     fmt::format("the request's header {} holds a line break", name));
  }
  return std::nullopt;
}

HTTPTransfer::HTTPTransfer(HTTPRequest request, const HTTPSession::Configuration& configuration)
    : request_(std::move(request)),
      configuration_(configuration),
      limits_(limitsOf(request_, configuration.limits)),
      body_(configuration.spoolDirectory, configuration.limits.spoolAbove),
      handle_(curl_easy_init()) {
  if (handle_) setUp();
}

void HTTPTransfer::setUp() {
  set(CURLOPT_PRIVATE, this);
  set(CURLOPT_ERRORBUFFER, detail_.data());
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_QUICK_EXIT, 1L);  // a name that is still being looked up does not hold up the end
  set(CURLOPT_BUFFERSIZE, receiveBuffer);
  set(CURLOPT_NOPROXY, hostsWithoutProxy().c_str());
  // So that one dead address of several leaves time for the next.
  set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits_.idleTimeout.count()));
  set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(limits_.bodyBytes));

  set(CURLOPT_HEADERDATA, this);
  set(
      CURLOPT_HEADERFUNCTION, +[](char* bytes, std::size_t, std::size_t count, void* self) {
        return static_cast<HTTPTransfer*>(self)->onHeader({bytes, count}) ? count : 0;
      });
  set(CURLOPT_WRITEDATA, this);
  set(
      CURLOPT_WRITEFUNCTION, +[](char* bytes, std::size_t, std::size_t count, void* self) {
        return static_cast<HTTPTransfer*>(self)->onBody({bytes, count}) ? count : 0;
      });
  set(CURLOPT_NOPROGRESS, 0L);
  set(CURLOPT_XFERINFODATA, this);
  set(
      CURLOPT_XFERINFOFUNCTION,
      +[](void* self, curl_off_t, curl_off_t downloaded, curl_off_t, curl_off_t uploaded) {
        return static_cast<HTTPTransfer*>(self)->onProgress(downloaded, uploaded) ? 0 : 1;
      });
  set(CURLOPT_PREREQDATA, this);
  set(
      CURLOPT_PREREQFUNCTION, +[](void* self, char*, char*, int, int) {
        return static_cast<HTTPTransfer*>(self)->onConnected() ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
      });
  setUpRequest();
  setUpTrust();
}

void HTTPTransfer::setUpRequest() {
  set(CURLOPT_URL, request_.url.c_str());
  set(CURLOPT_PATH_AS_IS, 1L);
  set(CURLOPT_PROTOCOLS_STR, protocols);
  set(CURLOPT_REDIR_PROTOCOLS_STR, protocols);
  set(CURLOPT_FOLLOWLOCATION, 1L);
  set(CURLOPT_MAXREDIRS, static_cast<long>(limits_.redirects));
  set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
  // A batch to one server waits for the first handshake, which tells whether one connection carries them all.
  set(CURLOPT_PIPEWAIT, request_.url.starts_with("https:") ? 1L : 0L);

  if (request_.method == "POST") {
    set(CURLOPT_POST, 1L);
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
    set(CURLOPT_POSTFIELDS, request_.body.c_str());
    addHeader("Expect:");
    addHeader("Content-Type:");  // libcurl would call it a form
  }
  for (const auto& [name, value] : request_.headers) {
    addHeader(value.empty() ? name + ";" : fmt::format("{}: {}", name, value));
  }
  set(CURLOPT_HTTPHEADER, headers_.get());
}

void HTTPTransfer::setUpTrust() {
  set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  const auto& certificate = configuration_.trustedCertificate;
  if (certificate.empty()) return;
  const auto* built = curl_version_info(CURLVERSION_NOW);
  if (built->capath != nullptr || built->cainfo == nullptr) {  // the system's folder stays in force
    set(CURLOPT_CAINFO, certificate.c_str());
    return;
  }
  std::optional<Error> ignored;
  std::string both = readFile(certificate, ignored).value_or("");
  if (both.empty()) {
    set(CURLOPT_CAINFO, certificate.c_str());  // fails, and says why
    return;
  }
  both.append("\n").append(readFile(built->cainfo, ignored).value_or(""));
  curl_blob blob{both.data(), both.size(), CURL_BLOB_COPY};
  set(CURLOPT_CAINFO_BLOB, &blob);
}

void HTTPTransfer::addHeader(const std::string& line) {
  auto* extended = curl_slist_append(headers_.get(), line.c_str());
  if (extended == nullptr) return;
  static_cast<void>(headers_.release());
  headers_.reset(extended);
}

// When a connection kept from earlier turns out to be dead, libcurl sends the request once more on a new one.
// The service may have acted on the first: an event counted twice is worse than one that is reported as lost.
bool HTTPTransfer::onConnected() {
  lastByte_ = std::chrono::steady_clock::now();
  long redirects = 0;
  curl_easy_getinfo(handle_.get(), CURLINFO_REDIRECT_COUNT, &redirects);
  const bool isSentAgain = ++timesSent_ > redirects + 1;
  if (!isSentAgain || request_.method != "POST") return true;
  fail(httpError(CURLE_RECV_ERROR, url(), limits_, "the connection was closed before the answer"));
  return false;
}

bool HTTPTransfer::onHeader(std::string_view line) {
  lastByte_ = std::chrono::steady_clock::now();
  const bool beginsAnswer = std::exchange(headersEnded_, line == "\r\n" || line == "\n");
  if (beginsAnswer && line.starts_with("HTTP/")) {
    if (!isInterim_) headerBytes_ = 0;  // the answer after a redirect counts anew
    const auto code = line.find(' ');
    isInterim_ = code != std::string_view::npos && line.substr(code + 1).starts_with('1');
  }
  headerBytes_ += line.size();
  if (headerBytes_ <= limits_.headerBytes) return true;
  fail(headersTooLarge(url(), limits_));
  return false;
}

bool HTTPTransfer::onBody(std::string_view bytes) {
  if (bytes.size() > limits_.bodyBytes - body_.size()) {
    fail(httpError(CURLE_FILESIZE_EXCEEDED, url(), limits_));
    return false;
  }
  failure_ = body_.append(bytes);
  return !failure_;
}

bool HTTPTransfer::onProgress(curl_off_t downloaded, curl_off_t uploaded) {
  if (downloaded + uploaded != moved_) lastByte_ = std::chrono::steady_clock::now();
  moved_ = downloaded + uploaded;
  // The body of a redirect is not for anybody, and must end all the same.
  if (static_cast<std::uint64_t>(downloaded) <= limits_.bodyBytes) return true;
  fail(httpError(CURLE_FILESIZE_EXCEEDED, url(), limits_));
  return false;
}

std::string HTTPTransfer::url() const {
  const char* effective = nullptr;
  curl_easy_getinfo(handle_.get(), CURLINFO_EFFECTIVE_URL, &effective);
  return effective == nullptr || *effective == '\0' ? request_.url : effective;
}

HTTPResult HTTPTransfer::finish(CURLcode code) {
  if (failure_) return {std::nullopt, std::move(failure_)};
  // libcurl has no better word for one header line beyond its own bound.
  if (code == CURLE_OUT_OF_MEMORY && headerBytes_ > 0 && body_.size() == 0) {
    return {std::nullopt, headersTooLarge(url(), limits_)};
  }
  if (code != CURLE_OK) return {std::nullopt, httpError(code, url(), limits_, detail_.data())};
  HTTPResult result;
  result.body = body_.take(result.error);
  return result;
}

}  // namespace vantorium
