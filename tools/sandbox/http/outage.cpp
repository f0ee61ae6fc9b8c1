#include "sandbox/http/outage.hpp"

namespace vantorium::sandbox {

void Outage::begin(std::chrono::milliseconds length) {
  const std::lock_guard lock(mutex_);
  if (isUnderWay_ || hasEnded_) return;
  if (thread_.joinable()) thread_.join();
  isUnderWay_ = true;
  thread_ = std::thread([this, length] { sitOut(length); });
}

void Outage::sitOut(std::chrono::milliseconds length) {
  listener_.hangUp();
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, length, [this] { return hasEnded_; });
  lock.unlock();
  listener_.pickUp();
  lock.lock();
  isUnderWay_ = false;
}

void Outage::end() {
  std::unique_lock lock(mutex_);
  hasEnded_ = true;
  changed_.notify_all();
  std::thread thread = std::move(thread_);
  lock.unlock();
  if (thread.joinable()) thread.join();
}

}  // namespace vantorium::sandbox
