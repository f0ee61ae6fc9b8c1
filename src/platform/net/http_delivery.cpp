#include "platform/net/http_delivery.hpp"

#include <utility>

namespace vantorium {

void HTTPDelivery::deliver(HTTPExchangeList ended) noexcept {
  {
    const MutexLock lock(mutex_);
    ended_.splice(ended_.end(), ended);
  }
  if (!flush()) flush();  // what fails once may well succeed
}

bool HTTPDelivery::flush() noexcept {
  const MutexLock lock(mutex_);
  if (ended_.empty() || isScheduled_) return true;
  isScheduled_ = schedule();
  return isScheduled_;
}

bool HTTPDelivery::schedule() noexcept {
  try {
    queue_->async([self = shared_from_this()] { self->run(); });
    return true;
  } catch (...) {  // there is no memory for the queue's entry
    return false;
  }
}

void HTTPDelivery::run() {
  for (bool isPassedOn = false; !isPassedOn;) {
    HTTPExchangeList one;
    {
      const MutexLock lock(mutex_);
      one.splice(one.end(), ended_, ended_.begin());
      // Before the completion, so that the next one is called whatever this one throws.
      isScheduled_ = !ended_.empty();
      isPassedOn = !isScheduled_ || schedule();
    }
    HTTPExchange& exchange = one.front();
    try {
      if (exchange.completion) exchange.completion(std::move(exchange.answer));
    } catch (...) {
      if (isPassedOn) throw;  // for the queue to deal with
    }
  }
}

}  // namespace vantorium
