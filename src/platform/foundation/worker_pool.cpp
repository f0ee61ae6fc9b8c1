#include "platform/foundation/worker_pool.hpp"

#include <pthread.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <exception>
#include <list>
#include <string>
#include <thread>
#include <utility>

#include <vantorium/dispatch_queue.hpp>

#include "platform/foundation/run_or_drop.hpp"
#include "platform/foundation/signal_block.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

namespace {

constexpr const char* poolName = "vantorium";

void nameThread(const char* name) { pthread_setname_np(pthread_self(), name); }

/// What a thread of the pool does next. Answers whether it has to be done once more, after what waits.
using Turn = std::function<bool()>;
/// Turns wait in lists, for what is in a list moves to another one without taking memory: who hands work over
/// takes all memory first, and nothing can fail half-way.
using Turns = std::list<Turn>;

/// The threads and what they have to do. Where the system refuses some of the threads, the others serve.
class Pool {
 public:
  Pool() {
    const MutexLock lock(mutex_);
    const unsigned wanted = std::clamp(std::thread::hardware_concurrency(), 2U, 4U);
    while (threads_ < wanted && startThread()) {
    }
  }

  /// Takes the turns out of the list.
  void post(Turns& turns) noexcept EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    waiting_.splice(waiting_.end(), turns);
    if (threads_ == 0) startThread();  // a system that refused threads may have one now
    changed_.notify_one();
  }

  /// Drops what has not run and gives what runs a moment to end: statics it may use are about to go. Work
  /// that is stuck (on a slow disk, say) must not keep the process from ending.
  void stop() EXCLUDES(mutex_) {
    const auto patience = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
    const MutexLock lock(mutex_);
    isStopped_ = true;
    changed_.notify_all();
    while (threads_ > 0 && ended_.wait_until(mutex_, patience) == std::cv_status::no_timeout) {
    }
  }

 private:
  bool startThread() noexcept REQUIRES(mutex_) {
    const SignalBlock block;
    try {
      std::thread([this] { run(); }).detach();
    } catch (const std::exception&) {
      return false;
    }
    ++threads_;
    return true;
  }

  void run() EXCLUDES(mutex_) {
    nameThread(poolName);
    for (Turns turn; takeNext(turn);) {
      bool isAgain = false;
      runOrDrop([&] { isAgain = turn.front()(); });
      if (!isAgain) turn.clear();
    }
    const MutexLock lock(mutex_);
    --threads_;
    ended_.notify_all();
  }

  /// Puts the last turn, if it is left, behind those that wait, and takes the first; false in the end.
  bool takeNext(Turns& turn) EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    waiting_.splice(waiting_.end(), turn);
    while (!isStopped_ && waiting_.empty()) changed_.wait(mutex_);
    if (isStopped_) return false;
    turn.splice(turn.end(), waiting_, waiting_.begin());
    return true;
  }

  Mutex mutex_;
  std::condition_variable_any changed_, ended_;
  Turns waiting_ GUARDED_BY(mutex_);
  bool isStopped_ GUARDED_BY(mutex_) = false;
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

/// The work of a serial queue: one piece for each turn, so that a busy queue leaves room for others. Kept by
/// its turn while there is work.
class Series {
 public:
  explicit Series(const std::string& label) {
    // Shortened to what the kernel keeps.
    std::copy_n(label.begin(), std::min(label.size(), name_.size() - 1), name_.begin());
  }

  /// Takes the work out of the list. True if the series was at rest and needs turns from now on.
  bool add(std::list<std::function<void()>>& work) noexcept EXCLUDES(mutex_) {
    const MutexLock lock(mutex_);
    waiting_.splice(waiting_.end(), work);
    return !std::exchange(isRunning_, true);
  }

  bool runNext() EXCLUDES(mutex_) {
    std::list<std::function<void()>> next;
    {
      const MutexLock lock(mutex_);
      next.splice(next.end(), waiting_, waiting_.begin());
    }
    nameThread(name_.data());
    runOrDrop(next.front());
    next.clear();  // before the work that follows, and under the same name
    nameThread(poolName);
    const MutexLock lock(mutex_);
    return isRunning_ = !waiting_.empty();
  }

 private:
  std::array<char, 16> name_{};
  Mutex mutex_;
  std::list<std::function<void()>> waiting_ GUARDED_BY(mutex_);
  bool isRunning_ GUARDED_BY(mutex_) = false;
};

class SerialQueue : public DispatchQueue {
 public:
  explicit SerialQueue(const std::string& label) : series_(std::make_shared<Series>(label)) {}

  void async(std::function<void()> work) override {
    Pool& threads = pool();
    std::list<std::function<void()>> one;
    one.push_back(std::move(work));
    Turns turn;
    turn.emplace_back([series = series_] { return series->runNext(); });
    if (series_->add(one)) threads.post(turn);
  }

 private:
  const std::shared_ptr<Series> series_;
};

}  // namespace

void workers::async(std::function<void()> work) {
  Turns turn;
  turn.emplace_back([work = std::move(work)] {
    work();
    return false;
  });
  pool().post(turn);
}

std::shared_ptr<DispatchQueue> DispatchQueue::serial(std::string label) {
  return std::make_shared<SerialQueue>(label);
}

}  // namespace vantorium
