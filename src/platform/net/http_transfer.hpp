#pragma once

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <vantorium/error.hpp>

#include "platform/foundation/data.hpp"
#include "platform/net/http_body.hpp"
#include "platform/net/http_session.hpp"

namespace vantorium {

/// What an exchange comes to: exactly one of the two.
struct HTTPResult {
  std::optional<Data> body;
  std::optional<Error> error;
};

/// One exchange: a request on its way through libcurl and the answer as it comes in. Network thread only.
class HTTPTransfer {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  /// What is wrong with the request itself, found without the network; any thread.
  static std::optional<Error> check(const HTTPRequest& request, const HTTPLimits& limits);

  /// A request that passed `check`. The configuration must outlive the transfer.
  HTTPTransfer(HTTPRequest request, const HTTPSession::Configuration& configuration);
  HTTPTransfer(const HTTPTransfer&) = delete;
  HTTPTransfer& operator=(const HTTPTransfer&) = delete;

  /// Made ready to be added to a multi handle; null when there is no memory. It knows its transfer as
  /// CURLOPT_PRIVATE.
  CURL* handle() const { return handle_.get(); }
  /// When a byte last moved, either way, or the exchange began.
  TimePoint lastByte() const { return lastByte_; }
  /// The end: `code` is what libcurl says. Called once.
  HTTPResult finish(CURLcode code);

 private:
  struct Freed {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };

  void setUp();
  void setUpRequest();
  void setUpTrust();
  void addHeader(const std::string& line);
  /// Ends the exchange from within a callback, with an error of our own.
  void fail(Error error) { failure_ = std::move(error); }
  std::string url() const;

  // Called by libcurl; false ends the exchange.
  bool onConnected();
  bool onHeader(std::string_view line);
  bool onBody(std::string_view bytes);
  bool onProgress(curl_off_t downloaded, curl_off_t uploaded);

  template <class Value>
  void set(CURLoption option, Value value) {
    curl_easy_setopt(handle_.get(), option, value);
  }

  const HTTPRequest request_;
  const HTTPSession::Configuration& configuration_;
  const HTTPLimits limits_;  // the session's, and what the request asks for
  HTTPBody body_;
  std::optional<Error> failure_;
  TimePoint lastByte_ = std::chrono::steady_clock::now();
  curl_off_t moved_ = 0;
  long timesSent_ = 0;
  std::size_t headerBytes_ = 0;
  bool headersEnded_ = true;  // the next line begins an answer, or is none of a head
  bool isInterim_ = false;    // the header lines at hand are those of a 1xx answer
  std::array<char, CURL_ERROR_SIZE> detail_{};
  std::unique_ptr<curl_slist, Freed> headers_;
  std::unique_ptr<CURL, Freed> handle_;  // goes first: it refers to the rest
};

}  // namespace vantorium
