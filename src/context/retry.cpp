#include "context/retry.hpp"

#include <cstdint>
#include <utility>

#include "platform/foundation/backoff.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium {

namespace {

/// A piece of work and what may set it off. Timer and tokens come a moment after the work: who takes it
/// before that finds none.
struct Pending {
  std::uint64_t number = 0;  ///< tells it from those before and after
  std::function<void()> work;
  std::unique_ptr<Timer> timer;
  std::shared_ptr<void> online, end;
};

}  // namespace

struct Retry::State {
  State(Seconds first, Seconds longest) : backoff(first, longest) {}

  /// Makes `next` the one that is pending; returns the one whose place it takes.
  std::unique_ptr<Pending> put(std::unique_ptr<Pending> next, std::uint64_t& number) EXCLUDES(mutex) {
    const MutexLock lock(mutex);
    number = next->number = ++count;
    next.swap(pending);
    return next;
  }

  /// Takes what is pending, if it has this number.
  std::unique_ptr<Pending> take(std::uint64_t number) EXCLUDES(mutex) {
    const MutexLock lock(mutex);
    return pending && pending->number == number ? std::move(pending) : nullptr;
  }
  std::unique_ptr<Pending> take() EXCLUDES(mutex) {
    const MutexLock lock(mutex);
    return std::move(pending);
  }

  /// Runs the work of this number, unless it was taken before.
  void run(std::uint64_t number) EXCLUDES(mutex) {
    auto taken = take(number);
    if (!taken) return;
    const auto work = std::move(taken->work);
    taken.reset();
    work();
  }

  /// Gives the work of this number what sets it off, unless it was taken meanwhile.
  void arm(std::uint64_t number, Pending& triggers) EXCLUDES(mutex) {
    const MutexLock lock(mutex);
    if (!pending || pending->number != number) return;
    pending->timer = std::move(triggers.timer);
    pending->online = std::move(triggers.online);
    pending->end = std::move(triggers.end);
  }

  Mutex mutex;
  Backoff backoff GUARDED_BY(mutex);
  std::uint64_t count GUARDED_BY(mutex) = 0;
  std::unique_ptr<Pending> pending GUARDED_BY(mutex);
};

Retry::Retry(std::shared_ptr<SdkContext> context, Seconds first, Seconds longest)
    : context_(std::move(context)), state_(std::make_shared<State>(first, longest)) {}

Retry::~Retry() { cancel(); }

void Retry::schedule(std::function<void()> work) {
  Seconds pause{};
  {
    const MutexLock lock(state_->mutex);
    pause = state_->backoff.next();
  }
  schedule(pause, std::move(work));
}

void Retry::schedule(Seconds pause, std::function<void()> work) {
  // The work may run, and take this object down, before it is armed.
  const auto context = context_;
  const auto state = state_;
  auto added = std::make_unique<Pending>();
  added->work = std::move(work);
  std::uint64_t number = 0;
  state->put(std::move(added), number);
  try {
    Pending triggers;
    const auto run = [weak = std::weak_ptr(state), number] {
      if (const auto present = weak.lock()) present->run(number);
    };
    // The timer comes last: whoever sees that it waits may count on the others.
    triggers.online = context->observeOnline(run);
    triggers.end = context->observeEnd([weak = std::weak_ptr(state), number] {
      if (const auto present = weak.lock()) present->take(number);
    });
    triggers.timer = context->host().clock().schedule(pause, false, run);
    state->arm(number, triggers);
  } catch (...) {
    state->take(number);  // nothing would ever set it off
    throw;
  }
  if (context->hasEnded()) state->take(number);
}

void Retry::cancel() { state_->take(); }

void Retry::reset() {
  const auto state = state_;  // what is dropped may own this object
  state->take();
  const MutexLock lock(state->mutex);
  state->backoff.reset();
}

bool Retry::isPending() const {
  const MutexLock lock(state_->mutex);
  return state_->pending != nullptr;
}

}  // namespace vantorium
