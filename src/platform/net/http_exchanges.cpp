#include "platform/net/http_exchanges.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/net/http_error.hpp"

namespace vantorium {

namespace {

/// Exchanges with one server under way at a time. Others wait for their turn, and their time does not count.
constexpr std::size_t transfersPerServer = 64;

std::string serverOf(const std::string& url) {
  return url.substr(0, url.find_first_of("/?#", url.find("//") + 2));
}

/// What `make` answers, or that there was no memory to answer.
template <typename Make>
HTTPAnswer answerOf(const Make& make) noexcept {
  try {
    return make();
  } catch (...) {
    return {.error = outOfMemory()};
  }
}

}  // namespace

HTTPExchanges::HTTPExchanges(CURLM* multi, const HTTPSession::Configuration& configuration, Deliver deliver)
    : multi_(multi), configuration_(configuration), deliver_(std::move(deliver)) {}

void HTTPExchanges::add(HTTPExchangeList exchanges) {
  while (!exchanges.empty()) {
    const auto first = exchanges.begin();
    try {
      HTTPLane& lane = lanes_[serverOf(first->request.url)];
      lane.waiting.splice(lane.waiting.end(), exchanges, first);
    } catch (...) {
      refuse(exchanges, first, CURLE_OUT_OF_MEMORY);
    }
  }
}

void HTTPExchanges::cancel(std::uint64_t id) {
  const auto isMeant = [id](const HTTPExchange& exchange) { return exchange.id == id; };
  const auto active = std::ranges::find_if(active_, isMeant);
  if (active != active_.end()) return end(*active, CURLE_ABORTED_BY_CALLBACK);
  for (auto& [server, lane] : lanes_) {
    const auto waiting = std::ranges::find_if(lane.waiting, isMeant);
    if (waiting != lane.waiting.end()) return refuse(lane.waiting, waiting, CURLE_ABORTED_BY_CALLBACK);
  }
}

CURLMcode HTTPExchanges::advance() {
  startWaiting();
  int running = 0;
  const CURLMcode code = curl_multi_perform(multi_, &running);
  collectFinished();
  endOverdue();
  startWaiting();
  return code;
}

void HTTPExchanges::startWaiting() {
  for (auto at = lanes_.begin(); at != lanes_.end();) {
    start(at->second);
    at = at->second.active == 0 ? lanes_.erase(at) : std::next(at);
  }
}

void HTTPExchanges::start(HTTPLane& lane) {
  while (!lane.waiting.empty() && lane.active < transfersPerServer) {
    active_.splice(active_.end(), lane.waiting, lane.waiting.begin());
    HTTPExchange& exchange = active_.back();
    exchange.place = std::prev(active_.end());
    exchange.lane = &lane;
    ++lane.active;
    if (const CURLcode code = begin(exchange); code != CURLE_OK) end(exchange, code);
  }
}

CURLcode HTTPExchanges::begin(HTTPExchange& exchange) {
  try {
    exchange.transfer = std::make_unique<HTTPTransfer>(exchange.request, configuration_, &exchange);
  } catch (...) {
    return CURLE_OUT_OF_MEMORY;
  }
  if (exchange.transfer->failedSetUp() != CURLE_OK) return exchange.transfer->failedSetUp();
  nextLook_ = std::min(nextLook_, exchange.transfer->deadline());
  const CURLMcode code = curl_multi_add_handle(multi_, exchange.transfer->handle());
  return code == CURLM_OK ? CURLE_OK : CURLE_OUT_OF_MEMORY;
}

void HTTPExchanges::collectFinished() {
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    HTTPExchange* exchange = nullptr;
    curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &exchange);
    end(*exchange, message->data.result);
  }
}

void HTTPExchanges::endOverdue() {
  const auto now = std::chrono::steady_clock::now();
  if (now < nextLook_) return;
  nextLook_ = TimePoint::max();
  for (auto at = active_.begin(); at != active_.end();) {
    HTTPExchange& exchange = *at++;
    const auto deadline = exchange.transfer->deadline();
    if (deadline <= now) {
      end(exchange, CURLE_OPERATION_TIMEDOUT);
    } else {
      nextLook_ = std::min(nextLook_, deadline);
    }
  }
}

std::chrono::milliseconds HTTPExchanges::untilOverdue() const {
  const auto left = nextLook_ - std::chrono::steady_clock::now();
  return std::max(std::chrono::ceil<std::chrono::milliseconds>(left), std::chrono::milliseconds(0));
}

void HTTPExchanges::endAll(CURLcode code) noexcept {
  while (!active_.empty()) end(active_.front(), code);
  for (auto& [server, lane] : lanes_) {
    while (!lane.waiting.empty()) refuse(lane.waiting, lane.waiting.begin(), code);
  }
  lanes_.clear();
}

void HTTPExchanges::end(HTTPExchange& exchange, CURLcode code) noexcept {
  --exchange.lane->active;
  if (exchange.transfer) {
    curl_multi_remove_handle(multi_, exchange.transfer->handle());
    exchange.answer = answerOf([&] { return exchange.transfer->finish(code); });
    // With it goes the spool file of a body that failed: whoever hears of it finds no trace.
    exchange.transfer = nullptr;
    HTTPExchangeList ended;
    ended.splice(ended.end(), active_, exchange.place);
    deliver_(std::move(ended));
  } else {
    refuse(active_, exchange.place, code);
  }
}

void HTTPExchanges::refuse(HTTPExchangeList& from, HTTPExchangeList::iterator exchange,
                           CURLcode code) noexcept {
  exchange->answer = answerOf([&]() -> HTTPAnswer {
    return {.error = httpError(code, exchange->request.url, configuration_.limits)};
  });
  HTTPExchangeList ended;
  ended.splice(ended.end(), from, exchange);
  deliver_(std::move(ended));
}

}  // namespace vantorium
