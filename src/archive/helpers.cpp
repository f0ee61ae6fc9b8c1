#include "archive/helpers.hpp"

#include <condition_variable>
#include <exception>
#include <utility>

#include "platform/foundation/thread_annotations.hpp"
#include "platform/foundation/worker_pool.hpp"

namespace vantorium {

/// Shared with those who were asked: they may come when the work is over.
struct Helpers::State {
  State(unsigned limit, std::function<void()> work) : most(limit), help(std::move(work)) {}

  const unsigned most;
  const std::function<void()> help;
  Mutex mutex;
  std::condition_variable_any hasLeft;
  unsigned asked GUARDED_BY(mutex) = 0;
  unsigned present GUARDED_BY(mutex) = 0;
  bool isOver GUARDED_BY(mutex) = false;
};

Helpers::Helpers(unsigned most, std::function<void()> help)
    : state_(std::make_shared<State>(most, std::move(help))) {}

Helpers::~Helpers() {
  const MutexLock lock(state_->mutex);
  state_->isOver = true;
  while (state_->present > 0) state_->hasLeft.wait(state_->mutex);
}

void Helpers::invite() {
  {
    const MutexLock lock(state_->mutex);
    if (state_->asked >= state_->most) return;
    ++state_->asked;
  }
  try {
    workers::async([state = state_] { lendHand(*state); });
  } catch (const std::exception&) {  // no memory or no thread for one: the work goes on without
    const MutexLock lock(state_->mutex);
    --state_->asked;
  }
}

void Helpers::lendHand(State& state) {
  {
    const MutexLock lock(state.mutex);
    if (state.isOver) return;
    ++state.present;
  }
  state.help();
  const MutexLock lock(state.mutex);
  --state.present;
  --state.asked;
  state.hasLeft.notify_all();
}

}  // namespace vantorium
