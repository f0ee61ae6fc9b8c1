#include "platform/foundation/worker_pool.hpp"

#define ASIO_STANDALONE
#include <pthread.h>

#include <algorithm>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/strand.hpp>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <system_error>
#include <thread>
#include <utility>

#include <vantorium/dispatch_queue.hpp>

#include "platform/foundation/signal_block.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

namespace {

constexpr const char* poolName = "vantorium";

void nameThread(const char* name) { pthread_setname_np(pthread_self(), name); }

/// The threads and what they have to do. asio's own pool fails as a whole when the system refuses one of its
/// threads; this one does with those that it got.
class Pool {
 public:
  Pool() {
    const MutexLock lock(mutex_);
    const unsigned wanted = std::clamp(std::thread::hardware_concurrency(), 2U, 4U);
    while (threads_ < wanted && startThread()) {
    }
  }

  asio::io_context::executor_type executor() { return context_.get_executor(); }

  /// To be called with each piece of work: a system that refused threads may have one now.
  void ensureThread() EXCLUDES(mutex_) {
    if (hasThread_) return;
    const MutexLock lock(mutex_);
    if (threads_ == 0) startThread();
  }

  /// Drops what has not run and gives what runs a moment to end: statics it may use are about to go. Work
  /// that is stuck (on a slow disk, say) must not keep the process from ending.
  void stop() EXCLUDES(mutex_) {
    context_.stop();
    const auto patience = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
    const MutexLock lock(mutex_);
    while (threads_ > 0 && ended_.wait_until(mutex_, patience) == std::cv_status::no_timeout) {
    }
  }

 private:
  bool startThread() REQUIRES(mutex_) {
    const SignalBlock block;
    try {
      std::thread([this] { run(); }).detach();
    } catch (const std::system_error&) {
      return false;
    }
    ++threads_;
    hasThread_ = true;
    return true;
  }

  void run() EXCLUDES(mutex_) {
    nameThread(poolName);
    context_.run();
    const MutexLock lock(mutex_);
    --threads_;
    ended_.notify_all();
  }

  asio::io_context context_;
  const asio::executor_work_guard<asio::io_context::executor_type> work_{context_.get_executor()};
  std::atomic<bool> hasThread_ = false;
  Mutex mutex_;
  std::condition_variable_any ended_;
  unsigned threads_ GUARDED_BY(mutex_) = 0;
};

Pool& pool() {
  static Pool* const shared = [] {
    // Never deleted: whoever still posts while the process ends finds it stopped, not gone.
    auto* made = new Pool;
    std::atexit([] { pool().stop(); });
    return made;
  }();
  return *shared;
}

class SerialQueue : public DispatchQueue {
 public:
  explicit SerialQueue(std::string label)
      : name_(std::make_shared<const std::string>(shortened(std::move(label)))),
        strand_(asio::make_strand(pool().executor())) {}

  void async(std::function<void()> work) override {
    pool().ensureThread();
    asio::post(strand_, [name = name_, work = std::move(work)] {
      nameThread(name->c_str());
      work();
      nameThread(poolName);
    });
  }

 private:
  static std::string shortened(std::string label) {
    constexpr std::size_t longestName = 15;  // what the kernel keeps
    label.resize(std::min(label.size(), longestName));
    return label;
  }

  std::shared_ptr<const std::string> name_;
  asio::strand<asio::io_context::executor_type> strand_;
};

}  // namespace

void workers::async(std::function<void()> work) {
  pool().ensureThread();
  asio::post(pool().executor(), std::move(work));
}

std::shared_ptr<DispatchQueue> DispatchQueue::serial(std::string label) {
  return std::make_shared<SerialQueue>(std::move(label));
}

}  // namespace vantorium
