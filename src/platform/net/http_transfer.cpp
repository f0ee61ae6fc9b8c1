#include "platform/net/http_transfer.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "platform/foundation/ascii.hpp"
#include "platform/foundation/files.hpp"
#include "platform/foundation/url.hpp"
#include "platform/net/http_error.hpp"

namespace vantorium {

namespace {

constexpr const char* protocols = "http,https";
constexpr long receiveBuffer = 128L * 1024;

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

std::string hostOf(const std::string& url) {
  const auto parsed = URL::parse(url);
  return parsed ? parsed->host() : url;
}

Error headersTooLarge(const std::string& url, const HTTPLimits& limits) {
  return Error::platform("curl", CURLE_RECV_ERROR,
                         fmt::format("The header lines that {} sent are longer than the {} bytes accepted.",
                                     hostOf(url), limits.headerBytes));
}

/// libcurl has one word for both.
Error lineTooLong(const std::string& url) {
  return Error::platform(
      "curl", CURLE_RECV_ERROR,
      fmt::format("A header line that {} sent is too long, or there is no memory for it.", hostOf(url)));
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

HTTPTransfer::HTTPTransfer(const HTTPRequest& request, const HTTPSession::Configuration& configuration,
                           void* owner)
    : request_(request),
      configuration_(configuration),
      limits_(limitsOf(request_, configuration.limits)),
      body_(configuration.spoolDirectory, configuration.limits.spoolAbove),
      handle_(curl_easy_init()) {
  if (handle_) {
    setUp(owner);
  } else {
    failedSetUp_ = CURLE_OUT_OF_MEMORY;
  }
}

void HTTPTransfer::setUp(void* owner) {
  set(CURLOPT_PRIVATE, owner);
  set(CURLOPT_ERRORBUFFER, detail_.data());
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_QUICK_EXIT, 1L);  // a name that is still being looked up does not hold up the end
  set(CURLOPT_BUFFERSIZE, receiveBuffer);
  set(CURLOPT_NOPROXY, hostsWithoutProxy().c_str());
  // So that one dead address of several leaves time for the next.
  set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits_.idleTimeout.count()));
  set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(limits_.bodyBytes));
  setUpCallbacks();
  setUpRequest();
  setUpTrust();
}

void HTTPTransfer::setUpCallbacks() {
  set(CURLOPT_HEADERDATA, this);
  set(
      CURLOPT_HEADERFUNCTION, +[](char* bytes, std::size_t, std::size_t count, void* self) {
        return guarded(self, [&](auto& transfer) { return transfer.onHeader({bytes, count}); }) ? count : 0;
      });
  set(CURLOPT_WRITEDATA, this);
  set(
      CURLOPT_WRITEFUNCTION, +[](char* bytes, std::size_t, std::size_t count, void* self) {
        return guarded(self, [&](auto& transfer) { return transfer.onBody({bytes, count}); }) ? count : 0;
      });
  set(CURLOPT_NOPROGRESS, 0L);
  set(CURLOPT_XFERINFODATA, this);
  set(
      CURLOPT_XFERINFOFUNCTION,
      +[](void* self, curl_off_t, curl_off_t downloaded, curl_off_t, curl_off_t uploaded) {
        return guarded(self, [&](auto& transfer) { return transfer.onProgress(downloaded, uploaded); }) ? 0
                                                                                                        : 1;
      });
  set(CURLOPT_PREREQDATA, this);
  set(
      CURLOPT_PREREQFUNCTION, +[](void* self, char*, char*, int, int) {
        return guarded(self, [&](auto& transfer) { return transfer.onConnected(); }) ? CURL_PREREQFUNC_OK
                                                                                     : CURL_PREREQFUNC_ABORT;
      });
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
  if (extended == nullptr) {
    failedSetUp_ = CURLE_OUT_OF_MEMORY;
    return;
  }
  static_cast<void>(headers_.release());
  headers_.reset(extended);
}

void HTTPTransfer::note(std::uint64_t bytes) {
  lastByte_ = std::chrono::steady_clock::now();
  measured_ += bytes;
  const std::chrono::duration<double> time = limits_.slowFor;
  if (static_cast<double>(measured_) >= static_cast<double>(limits_.slowBytesPerSecond) * time.count())
    measureAnew();
}

void HTTPTransfer::measureAnew() {
  measuredSince_ = lastByte_;
  measured_ = 0;
}

// When a connection kept from earlier turns out to be dead, libcurl sends the request once more on a new one.
// If the first had begun to leave, the service may have acted on it: an event counted twice is worse than one
// that is reported as lost.
bool HTTPTransfer::onConnected() {
  note(0);
  measureAnew();
  const long redirects = information<long>(CURLINFO_REDIRECT_COUNT);
  const long left = information<long>(CURLINFO_REQUEST_SIZE);
  const bool mayHaveArrived = redirects == redirects_ && left > left_;
  redirects_ = redirects;
  left_ = left;
  if (!mayHaveArrived || request_.method != "POST") return true;
  fail(httpError(CURLE_RECV_ERROR, url(), limits_, "the connection was closed before the answer"));
  return false;
}

bool HTTPTransfer::onHeader(std::string_view line) {
  note(line.size());
  const bool beginsAnswer = std::exchange(headersEnded_, line == "\r\n" || line == "\n");
  if (beginsAnswer && line.starts_with("HTTP/")) {
    measureAnew();
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
  if (body_.size() == 0) {
    const auto size = information<curl_off_t>(CURLINFO_CONTENT_LENGTH_DOWNLOAD_T);
    if (size > 0) failure_ = body_.expect(static_cast<std::uint64_t>(size));
  }
  if (!failure_) failure_ = body_.append(bytes);
  return !failure_;
}

bool HTTPTransfer::onProgress(curl_off_t downloaded, curl_off_t uploaded) {
  const curl_off_t moved = downloaded + uploaded;
  // After a redirect they are counted anew.
  if (moved != moved_) note(static_cast<std::uint64_t>(moved > moved_ ? moved - moved_ : moved));
  moved_ = moved;
  // The body of a redirect is not for anybody, and must end all the same.
  if (static_cast<std::uint64_t>(downloaded) <= limits_.bodyBytes) return true;
  fail(httpError(CURLE_FILESIZE_EXCEEDED, url(), limits_));
  return false;
}

std::string HTTPTransfer::url() const {
  const auto* effective = information<const char*>(CURLINFO_EFFECTIVE_URL);
  return effective == nullptr || *effective == '\0' ? request_.url : effective;
}

std::string HTTPTransfer::contentType() const {
  curl_header* header = nullptr;
  if (curl_easy_header(handle_.get(), "Content-Type", 0, CURLH_HEADER, -1, &header) != CURLHE_OK) return {};
  const std::string_view type =
      std::string_view(header->value).substr(0, std::string_view(header->value).find(';'));
  return asciiLowered(std::string(type.substr(0, type.find_last_not_of(" \t") + 1)));
}

HTTPAnswer HTTPTransfer::finish(CURLcode code) {
  HTTPAnswer answer;
  answer.body = takeBody(code, answer.error);
  const long status = information<long>(CURLINFO_RESPONSE_CODE);
  answer.status =
      status < 200 ? 0 : static_cast<int>(status);  // an interim one announces, and answers nothing
  answer.contentType = contentType();
  answer.hasLeft = information<long>(CURLINFO_REQUEST_SIZE) > 0;
  return answer;
}

Error HTTPTransfer::timedOut() const {
  const auto now = std::chrono::steady_clock::now();
  if (now < silentAt() && now >= slowAt()) return tooSlow(url(), limits_);
  if (now < silentAt() && now >= began_ + limits_.longest) return tookTooLong(url(), limits_);
  return httpError(CURLE_OPERATION_TIMEDOUT, url(), limits_, detail_.data());
}

std::optional<Data> HTTPTransfer::takeBody(CURLcode code, std::optional<Error>& error) {
  if (isOutOfMemory_) {
    error = outOfMemory();
  } else if (failure_) {
    error = std::move(failure_);
  } else if (code == CURLE_OPERATION_TIMEDOUT) {
    error = timedOut();
  } else if (code == CURLE_OUT_OF_MEMORY && headerBytes_ > 0 && body_.size() == 0) {
    error = lineTooLong(url());
  } else if (code != CURLE_OK) {
    error = httpError(code, url(), limits_, detail_.data());
  } else {
    return body_.take(error);
  }
  return std::nullopt;
}

}  // namespace vantorium
