#include "platform/net/http_session.hpp"

#include <curl/curl.h>

#include <cerrno>
#include <chrono>
#include <new>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/foundation/signal_block.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "platform/net/http_delivery.hpp"
#include "platform/net/http_error.hpp"
#include "platform/net/http_exchanges.hpp"
#include "platform/net/http_library.hpp"
#include "platform/net/http_transfer.hpp"

namespace vantorium {

namespace {

using std::chrono::milliseconds;

/// How many connections are kept, whether used or not.
constexpr long connectionsKept = 64;
/// When completions that found no memory are tried again.
constexpr milliseconds nextFlush{50};

struct MultiCleanup {
  void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
using Multi = std::unique_ptr<CURLM, MultiCleanup>;

/// Whether the thread that waits in `multi` looks up; what fails once may well succeed.
bool wake(CURLM* multi) {
  for (int tries = 0; tries < 3; ++tries) {
    if (curl_multi_wakeup(multi) == CURLM_OK) return true;
  }
  return false;
}

/// None with `error` set when there is no memory, or no file descriptor to wake it by.
Multi makeMulti(std::optional<Error>& error) {
  errno = 0;
  Multi multi(curl_multi_init());
  if (multi && curl_multi_setopt(multi.get(), CURLMOPT_MAXCONNECTS, connectionsKept) == CURLM_OK &&
      wake(multi.get())) {
    return multi;
  }
  error = noNetwork(errno == 0 ? ENOMEM : errno);
  return nullptr;
}

}  // namespace

/// The network thread and the way to it. The thread lives while there is something to do, and a little longer
/// with the connections that it keeps.
class HTTPSession::Impl {
 public:
  explicit Impl(Configuration configuration);
  ~Impl();
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  std::uint64_t send(HTTPRequest request, Completion completion) EXCLUDES(mutex_);
  void cancel(std::uint64_t exchange) EXCLUDES(mutex_);
  void shutdown() EXCLUDES(mutex_, shutdownMutex_);

 private:
  /// Makes sure that there is a thread; else returns why there is none.
  std::optional<Error> start() REQUIRES(mutex_);
  std::optional<Error> handOver(HTTPExchangeList& exchange) REQUIRES(mutex_);

  void run(const Multi& multi);
  /// Does what can be done and waits for more; a failure is for all exchanges.
  CURLMcode turn(CURLM* multi, HTTPExchanges& exchanges);
  /// Hands over what was sent; false when it is time to end. Whoever sends then starts another thread.
  bool takeIncoming(HTTPExchanges& exchanges, bool goesOn) EXCLUDES(mutex_);

  const Configuration configuration_;
  const std::shared_ptr<HTTPDelivery> delivery_ = std::make_shared<HTTPDelivery>();
  Mutex mutex_;
  CURLM* multi_ GUARDED_BY(mutex_) = nullptr;  // the network thread's, for waking it; null when it ends
  std::thread thread_ GUARDED_BY(mutex_);
  bool isStopping_ GUARDED_BY(mutex_) = false;
  std::uint64_t lastID_ GUARDED_BY(mutex_) = 0;
  HTTPExchangeList incoming_ GUARDED_BY(mutex_);
  std::vector<std::uint64_t> cancelled_ GUARDED_BY(mutex_);
  Mutex shutdownMutex_;  // held while the thread is awaited

  std::chrono::steady_clock::time_point lastBusy_;  // the network thread's own
};

HTTPSession::Impl::Impl(Configuration configuration) : configuration_(std::move(configuration)) {
  HTTPLibrary::shared().add(this, [this] { shutdown(); });
}

HTTPSession::Impl::~Impl() {
  HTTPLibrary::shared().remove(this);
  shutdown();
}

std::uint64_t HTTPSession::Impl::send(HTTPRequest request, Completion completion) {
  auto error = HTTPTransfer::check(request, configuration_.limits);
  HTTPExchangeList exchange(1);
  // From here on nothing that could fail stands between the request and its completion.
  exchange.front().request = std::move(request);
  exchange.front().completion = std::move(completion);
  std::uint64_t id = 0;
  {
    const MutexLock lock(mutex_);
    exchange.front().id = id = ++lastID_;
    if (!error) error = handOver(exchange);
  }
  if (!error) return id;
  exchange.front().answer.error = std::move(error);
  delivery_->deliver(std::move(exchange));
  return id;
}

std::optional<Error> HTTPSession::Impl::handOver(HTTPExchangeList& exchange) {
  try {
    if (isStopping_)
      return httpError(CURLE_ABORTED_BY_CALLBACK, exchange.front().request.url, configuration_.limits);
    if (auto error = start()) return error;
  } catch (...) {
    return outOfMemory();
  }
  if (!wake(multi_)) return noNetwork(errno);
  incoming_.splice(incoming_.end(), exchange);
  return std::nullopt;
}

std::optional<Error> HTTPSession::Impl::start() {
  if (multi_ != nullptr) return std::nullopt;
  if (thread_.joinable()) thread_.join();  // it has nothing left to do but to let go of its connections
  std::optional<Error> error;
  Multi multi = makeMulti(error);
  if (!multi) return error;
  CURLM* const made = multi.get();
  const SignalBlock block;
  try {
    thread_ = std::thread([this, multi = std::move(multi)] { run(multi); });
  } catch (const std::system_error& refused) {
    return noNetwork(refused.code().value());
  }
  multi_ = made;
  return std::nullopt;
}

void HTTPSession::Impl::cancel(std::uint64_t exchange) {
  const MutexLock lock(mutex_);
  if (multi_ == nullptr) return;
  try {
    cancelled_.push_back(exchange);
  } catch (const std::bad_alloc&) {
    return;
  }
  wake(multi_);
}

void HTTPSession::Impl::shutdown() {
  const MutexLock one(shutdownMutex_);
  std::thread thread;
  {
    const MutexLock lock(mutex_);
    isStopping_ = true;
    if (multi_ != nullptr) wake(multi_);
    thread = std::move(thread_);
  }
  if (thread.joinable()) thread.join();
}

void HTTPSession::Impl::run(const Multi& multi) {
  lastBusy_ = std::chrono::steady_clock::now();
  HTTPExchanges exchanges(multi.get(), configuration_,
                          [this](HTTPExchangeList ended) { delivery_->deliver(std::move(ended)); });
  CURLMcode code = CURLM_OK;
  while (takeIncoming(exchanges, code == CURLM_OK)) code = turn(multi.get(), exchanges);
  exchanges.endAll(code == CURLM_OK ? CURLE_ABORTED_BY_CALLBACK : CURLE_OUT_OF_MEMORY);
}

CURLMcode HTTPSession::Impl::turn(CURLM* multi, HTTPExchanges& exchanges) {
  const CURLMcode code = exchanges.advance();
  if (code != CURLM_OK) return code;
  const auto now = std::chrono::steady_clock::now();
  if (!exchanges.isEmpty()) lastBusy_ = now;
  milliseconds wait =
      exchanges.isEmpty()
          ? std::chrono::ceil<milliseconds>(lastBusy_ + configuration_.limits.connectionsKeptFor - now)
          : exchanges.untilOverdue();
  if (!delivery_->flush()) wait = std::min(wait, nextFlush);
  return curl_multi_poll(multi, nullptr, 0, static_cast<int>(std::max(wait.count(), 0L)), nullptr);
}

bool HTTPSession::Impl::takeIncoming(HTTPExchanges& exchanges, bool goesOn) {
  HTTPExchangeList incoming;
  std::vector<std::uint64_t> cancelled;
  const bool isQuiet = exchanges.isEmpty() && std::chrono::steady_clock::now() >=
                                                  lastBusy_ + configuration_.limits.connectionsKeptFor;
  {
    const MutexLock lock(mutex_);
    incoming.swap(incoming_);
    cancelled.swap(cancelled_);
    goesOn = goesOn && !isStopping_ && !(isQuiet && incoming.empty());
    if (!goesOn) multi_ = nullptr;
  }
  exchanges.add(std::move(incoming));
  for (const std::uint64_t id : cancelled) exchanges.cancel(id);
  return goesOn;
}

HTTPSession::HTTPSession(Configuration configuration)
    : impl_(std::make_unique<Impl>(std::move(configuration))) {}

HTTPSession::~HTTPSession() = default;

std::uint64_t HTTPSession::send(HTTPRequest request, Completion completion) {
  return impl_->send(std::move(request), std::move(completion));
}

void HTTPSession::cancel(std::uint64_t exchange) { impl_->cancel(exchange); }

void HTTPSession::shutdown() { impl_->shutdown(); }

}  // namespace vantorium
