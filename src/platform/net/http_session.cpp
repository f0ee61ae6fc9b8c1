#include "platform/net/http_session.hpp"

#include <curl/curl.h>

#include <chrono>
#include <climits>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <vantorium/dispatch_queue.hpp>

#include "platform/foundation/signal_block.hpp"
#include "platform/foundation/thread_annotations.hpp"
#include "platform/net/http_error.hpp"
#include "platform/net/http_exchanges.hpp"
#include "platform/net/http_library.hpp"
#include "platform/net/http_transfer.hpp"

namespace vantorium {

namespace {

/// For how long connections are kept for a next request when all is quiet.
constexpr std::chrono::seconds connectionsKeptFor{60};
/// How many connections are kept, whether used or not.
constexpr long connectionsKept = 64;

/// None when there is no memory, or no file descriptor to wake it by.
CURLM* makeMulti() {
  HTTPLibrary::shared();  // libcurl is ready from here on
  CURLM* const multi = curl_multi_init();
  curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, connectionsKept);
  if (curl_multi_wakeup(multi) == CURLM_OK) return multi;
  curl_multi_cleanup(multi);
  return nullptr;
}

}  // namespace

/// The network thread and the way to it.
class HTTPSession::Impl {
 public:
  explicit Impl(Configuration configuration);
  ~Impl();
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  std::uint64_t send(HTTPRequest request, Completion completion) EXCLUDES(mutex_);
  void cancel(std::uint64_t exchange) EXCLUDES(mutex_);
  void shutdown() EXCLUDES(mutex_, threadMutex_);

 private:
  struct Incoming {
    std::uint64_t id;
    HTTPRequest request;
    Completion completion;
  };

  bool startThread(CURLM* multi) EXCLUDES(threadMutex_);
  void run(CURLM* multi);
  /// Milliseconds for which nothing has to be done unless something comes in.
  int timeToWait(HTTPExchanges& exchanges, CURLM*& multi);
  /// Closes the connections, which only a new handle does.
  void dropConnections(HTTPExchanges& exchanges, CURLM*& multi) EXCLUDES(mutex_);
  /// Hands over what was sent; false when it is time to stop.
  bool takeIncoming(HTTPExchanges& exchanges) EXCLUDES(mutex_);
  void deliver(Completion completion, HTTPResult result) const;

  const Configuration configuration_;
  const std::shared_ptr<DispatchQueue> callbackQueue_ = DispatchQueue::serial("vantorium.http");
  Mutex mutex_;
  CURLM* multi_ GUARDED_BY(mutex_);  // the network thread's, for waking it
  bool isStopping_ GUARDED_BY(mutex_) = false;
  CURLcode refusal_ GUARDED_BY(mutex_) = CURLE_ABORTED_BY_CALLBACK;  // of what is sent too late
  std::uint64_t lastID_ GUARDED_BY(mutex_) = 0;
  std::vector<Incoming> incoming_ GUARDED_BY(mutex_);
  std::vector<std::uint64_t> cancelled_ GUARDED_BY(mutex_);

  Mutex threadMutex_;  // held while the thread is awaited
  std::thread thread_ GUARDED_BY(threadMutex_);

  // The network thread's own.
  std::chrono::steady_clock::time_point lastBusy_;
  bool hasConnections_ = false;
};

HTTPSession::Impl::Impl(Configuration configuration)
    : configuration_(std::move(configuration)), multi_(makeMulti()) {
  {
    const MutexLock lock(mutex_);
    if (multi_ == nullptr || !startThread(multi_)) {
      curl_multi_cleanup(multi_);
      isStopping_ = true;
      refusal_ = CURLE_FAILED_INIT;
      return;
    }
  }
  HTTPLibrary::shared().add(this, [this] { shutdown(); });
}

HTTPSession::Impl::~Impl() {
  HTTPLibrary::shared().remove(this);
  shutdown();
}

bool HTTPSession::Impl::startThread(CURLM* multi) {
  const MutexLock lock(threadMutex_);
  const SignalBlock block;
  try {
    thread_ = std::thread([this, multi] { run(multi); });
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

std::uint64_t HTTPSession::Impl::send(HTTPRequest request, Completion completion) {
  std::uint64_t id = 0;
  auto error = HTTPTransfer::check(request, configuration_.limits);
  if (!error) {
    const MutexLock lock(mutex_);
    id = ++lastID_;
    if (!isStopping_) {
      incoming_.push_back({id, std::move(request), std::move(completion)});
      curl_multi_wakeup(multi_);
      return id;
    }
    error = httpError(refusal_, request.url, configuration_.limits);
  }
  deliver(std::move(completion), {std::nullopt, std::move(error)});
  return id;
}

void HTTPSession::Impl::cancel(std::uint64_t exchange) {
  const MutexLock lock(mutex_);
  if (isStopping_) return;
  cancelled_.push_back(exchange);
  curl_multi_wakeup(multi_);
}

void HTTPSession::Impl::shutdown() {
  {
    const MutexLock lock(mutex_);
    if (!isStopping_) curl_multi_wakeup(multi_);
    isStopping_ = true;
  }
  const MutexLock lock(threadMutex_);
  if (thread_.joinable()) thread_.join();
}

void HTTPSession::Impl::run(CURLM* multi) {
  HTTPExchanges exchanges(multi, configuration_, [this](Completion completion, HTTPResult result) {
    deliver(std::move(completion), std::move(result));
  });
  while (takeIncoming(exchanges)) {
    int running = 0;
    CURLMcode code = curl_multi_perform(multi, &running);
    exchanges.collectFinished();
    const int wait = timeToWait(exchanges, multi);
    if (code == CURLM_OK) code = curl_multi_poll(multi, nullptr, 0, wait, nullptr);
    if (code != CURLM_OK) exchanges.endAll(CURLE_FAILED_INIT);
  }
  exchanges.endAll(CURLE_ABORTED_BY_CALLBACK);
  curl_multi_cleanup(multi);
}

int HTTPSession::Impl::timeToWait(HTTPExchanges& exchanges, CURLM*& multi) {
  const auto now = std::chrono::steady_clock::now();
  const int untilSilent = exchanges.endSilent();
  if (!exchanges.isEmpty()) {
    lastBusy_ = now;
    hasConnections_ = true;
    return untilSilent;
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(lastBusy_ + connectionsKeptFor - now);
  if (hasConnections_ && left.count() > 0) return static_cast<int>(left.count());
  if (hasConnections_) dropConnections(exchanges, multi);
  hasConnections_ = false;
  return INT_MAX;  // asleep until something comes in
}

void HTTPSession::Impl::dropConnections(HTTPExchanges& exchanges, CURLM*& multi) {
  CURLM* const fresh = makeMulti();
  if (fresh == nullptr) return;
  {
    const MutexLock lock(mutex_);
    multi_ = fresh;
  }
  exchanges.use(fresh);
  curl_multi_cleanup(std::exchange(multi, fresh));
}

bool HTTPSession::Impl::takeIncoming(HTTPExchanges& exchanges) {
  std::vector<Incoming> incoming;
  std::vector<std::uint64_t> cancelled;
  bool goesOn = false;
  {
    const MutexLock lock(mutex_);
    incoming.swap(incoming_);
    cancelled.swap(cancelled_);
    goesOn = !isStopping_;
  }
  for (auto& one : incoming) exchanges.add(one.id, std::move(one.request), std::move(one.completion));
  for (const std::uint64_t id : cancelled) exchanges.cancel(id);
  return goesOn;
}

void HTTPSession::Impl::deliver(Completion completion, HTTPResult result) const {
  callbackQueue_->async([completion = std::move(completion), result = std::move(result)]() mutable {
    if (completion) completion(std::move(result.body), std::move(result.error));
  });
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
