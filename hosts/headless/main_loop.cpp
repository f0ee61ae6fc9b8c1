#include "hosts/headless/main_loop.hpp"

#include <algorithm>
#include <utility>

#include "platform/foundation/run_or_drop.hpp"

namespace vantorium::headless {

using namespace std::chrono_literals;

namespace {

std::chrono::nanoseconds whole(Seconds seconds) {
  return std::chrono::round<std::chrono::nanoseconds>(seconds);
}

}  // namespace

struct MainLoop::Entry {
  Instant due;
  Instant interval;
  bool repeats;
  std::shared_ptr<std::function<void()>> handler;
};

class MainLoop::Handle : public Timer {
 public:
  Handle(std::weak_ptr<MainLoop> loop, std::shared_ptr<Entry> entry)
      : loop_(std::move(loop)), entry_(std::move(entry)) {}
  ~Handle() override {
    const auto loop = loop_.lock();
    if (!loop) return;
    std::shared_ptr<std::function<void()>> handler;  // released after the lock: it may own anything
    const std::lock_guard lock(loop->mutex_);
    handler = std::move(entry_->handler);
    auto& timers = loop->timers_;
    const auto [first, last] = timers.equal_range(entry_->due);
    const auto found = std::find_if(first, last, [&](const auto& each) { return each.second == entry_; });
    if (found != last) timers.erase(found);
  }

 private:
  std::weak_ptr<MainLoop> loop_;
  std::shared_ptr<Entry> entry_;
};

MainLoop::MainLoop(ClockKind kind)
    : kind_(kind), virtualNow_(std::chrono::sys_days(std::chrono::year{2026} / 1 / 1)) {}

std::size_t MainLoop::pendingTimers() const {
  const std::lock_guard lock(mutex_);
  return timers_.size();
}

void MainLoop::async(std::function<void()> work) {
  if (decorator_ && std::this_thread::get_id() != mainThread_) work = decorator_(std::move(work));
  {
    const std::lock_guard lock(mutex_);
    queue_.push_back(std::move(work));
  }
  changed_.notify_one();
}

void MainLoop::wake() {
  {
    const std::lock_guard lock(mutex_);
    isWoken_ = true;
  }
  changed_.notify_one();
}

Date MainLoop::now() const {
  if (kind_ == ClockKind::realTime) return std::chrono::system_clock::now();
  const std::lock_guard lock(mutex_);
  return virtualNow_;
}

void MainLoop::setNow(Date now) {
  const std::lock_guard lock(mutex_);
  virtualNow_ = now;
}

std::unique_ptr<Timer> MainLoop::schedule(Seconds interval, bool repeats, std::function<void()> handler) {
  auto entry = std::make_shared<Entry>();
  entry->interval = std::max(whole(interval), Instant{0});
  entry->repeats = repeats;
  entry->handler = std::make_shared<std::function<void()>>(std::move(handler));
  auto timer = std::make_unique<Handle>(weak_from_this(), entry);
  {
    const std::lock_guard lock(mutex_);
    entry->due = instantLocked() + entry->interval;
    timers_.emplace(entry->due, entry);
  }
  changed_.notify_one();
  return timer;
}

MainLoop::Instant MainLoop::instantLocked() const {
  return kind_ == ClockKind::virtualTime ? virtualInstant_
                                         : Instant(std::chrono::steady_clock::now() - started_);
}

std::function<void()> MainLoop::takeTimerLocked(Instant until) {
  if (timers_.empty() || timers_.begin()->first > until) return {};
  const std::shared_ptr<Entry> entry = timers_.begin()->second;
  timers_.erase(timers_.begin());
  auto handler = entry->handler;
  if (entry->repeats) {
    entry->due += std::max<Instant>(entry->interval, 1ms);
    timers_.emplace(entry->due, entry);
  }
  return [handler = std::move(handler)] { (*handler)(); };
}

std::function<void()> MainLoop::takeDueLocked() {
  if (!queue_.empty()) {
    auto work = std::move(queue_.front());
    queue_.pop_front();
    return work;
  }
  return takeTimerLocked(instantLocked());
}

void MainLoop::runPending() {
  runUntil([] { return false; }, Seconds{0});
}

bool MainLoop::runUntil(const std::function<bool()>& done, Seconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + whole(timeout);
  while (!done()) {
    std::unique_lock lock(mutex_);
    if (auto work = takeDueLocked()) {
      lock.unlock();
      runOrDrop(work);
      continue;
    }
    if (std::exchange(isWoken_, false)) continue;
    auto wakeUp = deadline;
    if (kind_ == ClockKind::realTime && !timers_.empty()) {
      wakeUp = std::min(wakeUp, started_ + timers_.begin()->first);
    }
    if (std::chrono::steady_clock::now() >= deadline) return false;
    changed_.wait_until(lock, wakeUp);
  }
  return true;
}

void MainLoop::advance(Seconds interval) {
  runPending();
  Instant target;
  {
    const std::lock_guard lock(mutex_);
    target = virtualInstant_ + whole(interval);
  }
  while (true) {
    std::function<void()> handler;
    {
      const std::lock_guard lock(mutex_);
      const Instant due = timers_.empty() ? target : timers_.begin()->first;
      handler = takeTimerLocked(target);
      // A handler may have advanced the clock itself, past our target.
      const Instant now = std::max(handler ? due : target, virtualInstant_);
      virtualNow_ += std::chrono::duration_cast<Date::duration>(now - virtualInstant_);
      virtualInstant_ = now;
    }
    if (!handler) return;
    runOrDrop(handler);
    runPending();
  }
}

}  // namespace vantorium::headless
