#include "platform/net/http_exchanges.hpp"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

#include "platform/net/http_error.hpp"

namespace vantorium {

namespace {

/// Exchanges with one server under way at a time. Others wait for their turn, and their silence does not
/// count.
constexpr std::size_t transfersPerServer = 64;

std::string serverOf(const std::string& url) {
  return url.substr(0, url.find_first_of("/?#", url.find("//") + 2));
}

}  // namespace

HTTPExchanges::HTTPExchanges(CURLM* multi, const HTTPSession::Configuration& configuration, Deliver deliver)
    : multi_(multi), configuration_(configuration), deliver_(std::move(deliver)) {}

void HTTPExchanges::add(std::uint64_t id, HTTPRequest request, HTTPSession::Completion completion) {
  std::string server = serverOf(request.url);
  Lane& lane = lanes_[server];
  lane.waiting.push_back({id, std::move(request), std::move(completion), std::move(server), nullptr});
  startWaiting(lane);
}

void HTTPExchanges::cancel(std::uint64_t id) {
  const auto isMeant = [id](const Exchange& exchange) { return exchange.id == id; };
  for (const auto& [handle, exchange] : active_) {
    if (isMeant(exchange)) return finish(handle, CURLE_ABORTED_BY_CALLBACK);
  }
  for (auto& [server, lane] : lanes_) {
    const auto found = std::ranges::find_if(lane.waiting, isMeant);
    if (found == lane.waiting.end()) continue;
    Exchange exchange = std::move(*found);
    lane.waiting.erase(found);
    return refuse(std::move(exchange), CURLE_ABORTED_BY_CALLBACK);
  }
}

void HTTPExchanges::startWaiting(Lane& lane) {
  while (!lane.waiting.empty() && lane.active < transfersPerServer) {
    Exchange exchange = std::move(lane.waiting.front());
    lane.waiting.pop_front();
    exchange.transfer = std::make_unique<HTTPTransfer>(exchange.request, configuration_);
    CURL* const handle = exchange.transfer->handle();
    if (handle == nullptr || curl_multi_add_handle(multi_, handle) != CURLM_OK) {
      refuse(std::move(exchange), CURLE_OUT_OF_MEMORY);
      continue;
    }
    ++lane.active;
    active_.emplace(handle, std::move(exchange));
  }
}

void HTTPExchanges::collectFinished() {
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
    if (message->msg == CURLMSG_DONE) finish(message->easy_handle, message->data.result);
  }
}

int HTTPExchanges::endSilent() {
  const auto now = std::chrono::steady_clock::now();
  std::vector<CURL*> silent;
  auto wait = std::chrono::nanoseconds::max();
  for (const auto& [handle, exchange] : active_) {
    const auto left = exchange.transfer->lastByte() + configuration_.limits.idleTimeout - now;
    if (left <= left.zero()) {
      silent.push_back(handle);
    } else {
      wait = std::min<std::chrono::nanoseconds>(wait, left);
    }
  }
  for (CURL* handle : silent) finish(handle, CURLE_OPERATION_TIMEDOUT);
  return static_cast<int>(std::min<std::int64_t>(wait / std::chrono::milliseconds(1) + 1, INT_MAX));
}

void HTTPExchanges::endAll(CURLcode code) {
  std::vector<Exchange> waiting;
  for (auto& [server, lane] : lanes_) {
    std::ranges::move(lane.waiting, std::back_inserter(waiting));
    lane.waiting.clear();
  }
  while (!active_.empty()) finish(active_.begin()->first, code);
  for (auto& exchange : waiting) refuse(std::move(exchange), code);
}

void HTTPExchanges::finish(CURL* handle, CURLcode code) {
  auto node = active_.extract(handle);
  if (node.empty()) return;
  Exchange& exchange = node.mapped();
  curl_multi_remove_handle(multi_, handle);
  HTTPResult result = exchange.transfer->finish(code);
  exchange.transfer
      .reset();  // and with it the spool file of a body that failed: whoever hears of it finds no trace
  deliver_(std::move(exchange.completion), std::move(result));

  const auto lane = lanes_.find(exchange.server);
  --lane->second.active;
  startWaiting(lane->second);
  if (lane->second.active == 0) lanes_.erase(lane);
}

void HTTPExchanges::refuse(Exchange exchange, CURLcode code) {
  deliver_(std::move(exchange.completion),
           {std::nullopt, httpError(code, exchange.request.url, configuration_.limits)});
}

}  // namespace vantorium
