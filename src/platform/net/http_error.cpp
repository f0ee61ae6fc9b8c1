#include "platform/net/http_error.hpp"

#include <curl/curl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "platform/foundation/file_descriptor.hpp"
#include "platform/foundation/url.hpp"

namespace vantorium {

namespace {

/// One or two sentences; "{}" stands for the host.
std::string explain(int code, const HTTPLimits& limits) {
  switch (code) {
    case CURLE_UNSUPPORTED_PROTOCOL:
      return "{} does not speak HTTP, or leads to an address that is neither http nor https.";
    case CURLE_URL_MALFORMAT:
      return "{} leads to an address that is malformed.";
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return "The address of {} was not found. Check the name and the internet connection.";
    case CURLE_COULDNT_CONNECT:
      return "{} could not be reached. Check the internet connection, or try again later.";
    case CURLE_OPERATION_TIMEDOUT:
      return fmt::format("{{}} was silent for {:g} s. Check the internet connection, or try again later.",
                         std::chrono::duration<double>(limits.idleTimeout).count());
    case CURLE_PEER_FAILED_VERIFICATION:
      return "The certificate of {} is not trusted. Check the device's date, or whether somebody listens in.";
    case CURLE_SSL_CONNECT_ERROR:
      return "A secure connection to {} could not be set up.";
    case CURLE_SSL_CACERT_BADFILE:
      return "The certificate that should be trusted for {} could not be read. Check its file.";
    case CURLE_TOO_MANY_REDIRECTS:
      return fmt::format("{{}} redirects more than {} times.", limits.redirects);
    case CURLE_FILESIZE_EXCEEDED:
      return fmt::format("{{}} sent more than the {} bytes that are accepted.", limits.bodyBytes);
    case CURLE_PARTIAL_FILE:
      return "{} ended its answer before it was complete. Try again.";
    case CURLE_GOT_NOTHING:
      return "{} closed the connection without an answer. Try again.";
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
      return "The connection to {} was lost. Try again.";
    case CURLE_ABORTED_BY_CALLBACK:
      return "The exchange with {} was cancelled.";
    default:
      return fmt::format("The exchange with {{}} failed: {}.",
                         curl_easy_strerror(static_cast<CURLcode>(code)));
  }
}

std::string oneLine(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return c >= 0 && c < ' '; }, ' ');
  return text;
}

std::string inWords(std::chrono::milliseconds time) {
  if (time.count() > 0 && time % std::chrono::minutes(1) == time.zero())
    return fmt::format("{} minutes", time / std::chrono::minutes(1));
  return fmt::format("{:g} s", std::chrono::duration<double>(time).count());
}

std::string perSecond(std::uint64_t bytes) {
  constexpr std::uint64_t kibibyte = 1024;
  return bytes % kibibyte == 0 ? fmt::format("{} KiB/s", bytes / kibibyte) : fmt::format("{} bytes/s", bytes);
}

/// `explanation` is one or two sentences, in which "{}" stands for the host.
Error explained(int code, std::string_view url, std::string_view explanation, std::string_view detail) {
  const auto parsed = URL::parse(url);
  const std::string host = parsed && !parsed->host().empty() ? parsed->host() : std::string(url);
  std::string description = fmt::format(fmt::runtime(explanation), host);
  // What follows a "?" may tell who the user is, and reports need not.
  std::string debug =
      oneLine(fmt::format("{} [{}; curl {}: {}]", description, url.substr(0, url.find('?')), code, detail));
  return Error::platform("curl", code, std::move(description), std::move(debug));
}

/// Whether libcurl ends so, among other reasons, when it gets no descriptor.
bool mayBeShortage(int code) {
  constexpr std::array codes{CURLE_FAILED_INIT,     CURLE_COULDNT_RESOLVE_HOST, CURLE_COULDNT_RESOLVE_PROXY,
                             CURLE_COULDNT_CONNECT, CURLE_OUT_OF_MEMORY,        CURLE_SSL_CACERT_BADFILE};
  return std::ranges::find(codes, code) != codes.end();
}

}  // namespace

Error httpError(int curlCode, std::string_view url, const HTTPLimits& limits, std::string_view detail) {
  if (mayBeShortage(curlCode)) {
    const FileDescriptor probe(::eventfd(0, EFD_CLOEXEC));
    if (!probe.isOpen()) return noNetwork(errno);
  }
  if (detail.empty()) detail = curl_easy_strerror(static_cast<CURLcode>(curlCode));
  return explained(curlCode, url, explain(curlCode, limits), detail);
}

Error tooSlow(std::string_view url, const HTTPLimits& limits) {
  const std::string text =
      fmt::format("{{}} sent less than {} for {}. Check the internet connection, or try again later.",
                  perSecond(limits.slowBytesPerSecond), inWords(limits.slowFor));
  return explained(CURLE_OPERATION_TIMEDOUT, url, text, "too slow");
}

Error tookTooLong(std::string_view url, const HTTPLimits& limits) {
  const std::string text = fmt::format(
      "The exchange with {{}} took longer than {}. Check the internet connection, or try again later.",
      inWords(limits.longest));
  return explained(CURLE_OPERATION_TIMEDOUT, url, text, "took too long");
}

Error noNetwork(int code) {
  std::string text = fmt::format("The network cannot be used: {}.", std::generic_category().message(code));
  if (code == EMFILE || code == ENFILE) text += " Close some files, or let the application open more.";
  return Error::platform("posix", code, std::move(text));
}

// Short enough for the space within a string.
Error outOfMemory() { return Error::platform("curl", CURLE_OUT_OF_MEMORY, "Out of memory."); }

}  // namespace vantorium
