#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "platform/net/http_exchange.hpp"

namespace vantorium {

/// The exchanges of a session that wait for their turn or are under way. Network thread only.
class HTTPExchanges {
 public:
  using Deliver = std::function<void(HTTPExchangeList ended)>;

  /// `deliver` is called once for every exchange, and throws nothing. `multi` stays the caller's; it and the
  /// configuration must outlive this object, which must have ended them all when it goes.
  HTTPExchanges(CURLM* multi, const HTTPSession::Configuration& configuration, Deliver deliver);

  /// Whether nothing waits or is under way.
  bool isEmpty() const { return active_.empty(); }

  /// They wait for their turn, which comes with `advance`.
  void add(HTTPExchangeList exchanges);
  /// Ends the one of this name, if it has not ended.
  void cancel(std::uint64_t id);
  /// Starts those whose turn it is, moves bytes, and ends what is done or overdue. A failure is one of all.
  CURLMcode advance();
  /// For how long nothing has to be done unless a byte or a request comes in; not while empty.
  std::chrono::milliseconds untilOverdue() const;
  /// Ends all of them, those that wait included, with this failure.
  void endAll(CURLcode code) noexcept;

 private:
  using TimePoint = HTTPTransfer::TimePoint;

  void startWaiting();
  void start(HTTPLane& lane);
  CURLcode begin(HTTPExchange& exchange);
  void collectFinished();
  void endOverdue();
  void end(HTTPExchange& exchange, CURLcode code) noexcept;
  /// Ends one that is not under way.
  void refuse(HTTPExchangeList& from, HTTPExchangeList::iterator exchange, CURLcode code) noexcept;

  CURLM* const multi_;
  const HTTPSession::Configuration& configuration_;
  const Deliver deliver_;
  std::map<std::string, HTTPLane> lanes_;  // by scheme, host and port
  HTTPExchangeList active_;
  /// No exchange is overdue before. Time of each only grows, so that looking then is early enough.
  TimePoint nextLook_ = TimePoint::max();
};

}  // namespace vantorium
