#pragma once

#include <curl/curl.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/net/http_session.hpp"
#include "platform/net/http_transfer.hpp"

namespace vantorium {

/// The exchanges of a session that wait for their turn or are under way. Network thread only.
class HTTPExchanges {
 public:
  using Deliver = std::function<void(HTTPSession::Completion completion, HTTPResult result)>;

  /// `deliver` is called once for every exchange. `multi` stays the caller's; it and the configuration must
  /// outlive this object.
  HTTPExchanges(CURLM* multi, const HTTPSession::Configuration& configuration, Deliver deliver);

  /// Goes on with another handle; only while empty.
  void use(CURLM* multi) { multi_ = multi; }
  /// Whether nothing waits or is under way.
  bool isEmpty() const { return active_.empty(); }

  /// Starts it, or lets it wait while too many with its server are under way.
  void add(std::uint64_t id, HTTPRequest request, HTTPSession::Completion completion);
  /// Ends the one that was added by this name, if it has not ended.
  void cancel(std::uint64_t id);
  /// Ends those that libcurl is done with, and starts others in their place.
  void collectFinished();
  /// Ends those that have been silent for too long; returns the milliseconds until the next one may have
  /// been.
  int endSilent();
  /// Ends all of them, those that wait included, with this failure.
  void endAll(CURLcode code);

 private:
  struct Exchange {
    std::uint64_t id;
    HTTPRequest request;
    HTTPSession::Completion completion;
    std::string server;                      // scheme, host and port
    std::unique_ptr<HTTPTransfer> transfer;  // once it is its turn
  };
  /// The exchanges with one server.
  struct Lane {
    std::size_t active = 0;
    std::deque<Exchange> waiting;
  };

  void startWaiting(Lane& lane);
  void finish(CURL* handle, CURLcode code);
  void refuse(Exchange exchange, CURLcode code);

  CURLM* multi_;
  const HTTPSession::Configuration& configuration_;
  const Deliver deliver_;
  std::map<std::string, Lane> lanes_;
  std::map<CURL*, Exchange> active_;
};

}  // namespace vantorium
