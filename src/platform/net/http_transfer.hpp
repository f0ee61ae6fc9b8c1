#pragma once

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <vantorium/error.hpp>

#include "platform/net/http_body.hpp"
#include "platform/net/http_session.hpp"

namespace vantorium {

/// One exchange: a request on its way through libcurl and the answer as it comes in. Network thread only.
class HTTPTransfer {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  /// What is wrong with the request itself, found without the network; any thread.
  static std::optional<Error> check(const HTTPRequest& request, const HTTPLimits& limits);

  /// A request that passed `check`. Both must outlive the transfer. libcurl keeps `owner` as CURLOPT_PRIVATE.
  HTTPTransfer(const HTTPRequest& request, const HTTPSession::Configuration& configuration, void* owner);
  HTTPTransfer(const HTTPTransfer&) = delete;
  HTTPTransfer& operator=(const HTTPTransfer&) = delete;

  /// Why the request cannot be sent as it should be, and must not be sent at all; CURLE_OK when it can.
  CURLcode failedSetUp() const { return failedSetUp_; }
  /// Made ready to be added to a multi handle.
  CURL* handle() const { return handle_.get(); }
  /// When the exchange will have been silent, slow or under way for too long; never becomes earlier.
  TimePoint deadline() const { return std::min({silentAt(), slowAt(), began_ + limits_.longest}); }
  /// The end: `code` is what libcurl says. Called once.
  HTTPAnswer finish(CURLcode code);

 private:
  struct Freed {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };

  void setUp(void* owner);
  void setUpRequest();
  void setUpTrust();
  void addHeader(const std::string& line);
  void setUpCallbacks();
  /// Ends the exchange from within a callback, with an error of our own.
  void fail(Error error) { failure_ = std::move(error); }
  /// `bytes` have moved, either way.
  void note(std::uint64_t bytes);
  void measureAnew();
  TimePoint silentAt() const { return lastByte_ + limits_.idleTimeout; }
  TimePoint slowAt() const {
    return limits_.slowBytesPerSecond == 0 ? TimePoint::max() : measuredSince_ + limits_.slowFor;
  }
  Error timedOut() const;
  std::string url() const;
  std::optional<Data> takeBody(CURLcode code, std::optional<Error>& error);
  std::string contentType() const;
  template <class Value>
  Value information(CURLINFO what) const {
    Value value{};
    curl_easy_getinfo(handle_.get(), what, &value);
    return value;
  }

  // Called by libcurl; false ends the exchange, and so does an exception.
  bool onConnected();
  bool onHeader(std::string_view line);
  bool onBody(std::string_view bytes);
  bool onProgress(curl_off_t downloaded, curl_off_t uploaded);

  /// What `callback` says; false when it throws. Nothing may be thrown through libcurl.
  template <class Callback>
  static bool guarded(void* self, const Callback& callback) noexcept {
    auto& transfer = *static_cast<HTTPTransfer*>(self);
    try {
      return callback(transfer);
    } catch (...) {
      transfer.isOutOfMemory_ = true;
      return false;
    }
  }

  template <class Value>
  void set(CURLoption option, Value value) {
    const CURLcode code = curl_easy_setopt(handle_.get(), option, value);
    if (failedSetUp_ == CURLE_OK) failedSetUp_ = code;
  }

  const HTTPRequest& request_;
  const HTTPSession::Configuration& configuration_;
  const HTTPLimits limits_;  // the session's, and what the request asks for
  HTTPBody body_;
  std::optional<Error> failure_;
  bool isOutOfMemory_ = false;
  CURLcode failedSetUp_ = CURLE_OK;
  const TimePoint began_ = std::chrono::steady_clock::now();
  TimePoint lastByte_ = began_;
  TimePoint measuredSince_ = began_;
  std::uint64_t measured_ = 0;  // bytes since then
  curl_off_t moved_ = 0;        // of bodies, either way
  /// What had been sent when a connection was last ready for a request: how many redirects that one follows,
  /// and how many bytes had left by then.
  long redirects_ = -1;
  long left_ = 0;
  std::size_t headerBytes_ = 0;
  bool headersEnded_ = true;  // the next line begins an answer, or is none of a head
  bool isInterim_ = false;    // the header lines at hand are those of a 1xx answer
  std::array<char, CURL_ERROR_SIZE> detail_{};
  std::unique_ptr<curl_slist, Freed> headers_;
  std::unique_ptr<CURL, Freed> handle_;  // goes first: it refers to the rest
};

}  // namespace vantorium
