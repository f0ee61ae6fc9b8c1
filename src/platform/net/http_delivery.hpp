#pragma once

#include <memory>

#include <vantorium/dispatch_queue.hpp>

#include "platform/foundation/thread_annotations.hpp"
#include "platform/net/http_exchange.hpp"

namespace vantorium {

/// Brings ended exchanges to their completions: one at a time, on a queue of its own. Owned by a shared_ptr,
/// which the work on that queue shares. Any thread.
class HTTPDelivery : public std::enable_shared_from_this<HTTPDelivery> {
 public:
  /// Takes over exchanges whose answer is there.
  void deliver(HTTPExchangeList ended) noexcept EXCLUDES(mutex_);
  /// False when there was no memory to call the completions that are due; to be tried again.
  bool flush() noexcept EXCLUDES(mutex_);

 private:
  bool schedule() noexcept REQUIRES(mutex_);
  void run() EXCLUDES(mutex_);

  const std::shared_ptr<DispatchQueue> queue_ = DispatchQueue::serial("vantorium.http");
  Mutex mutex_;
  HTTPExchangeList ended_ GUARDED_BY(mutex_);
  bool isScheduled_ GUARDED_BY(mutex_) = false;
};

}  // namespace vantorium
