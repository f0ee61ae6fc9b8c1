#include "hosts/gtk/main_queue.hpp"

#include <glib.h>

#include <deque>
#include <memory>
#include <utility>

#include "platform/foundation/run_or_drop.hpp"
#include "platform/foundation/thread_annotations.hpp"

namespace vantorium::gtk {

struct MainQueue::State {
  Mutex mutex;
  std::deque<std::function<void()>> work GUARDED_BY(mutex);
  bool isScheduled GUARDED_BY(mutex) = false;
};

MainQueue::MainQueue() : state_(std::make_shared<State>()) {}

MainQueue::~MainQueue() {
  std::deque<std::function<void()>> dropped;  // destroyed after the lock is gone
  MutexLock lock(state_->mutex);
  dropped.swap(state_->work);
}

void MainQueue::async(std::function<void()> work) {
  // All memory is taken first: work that is there must not wait for a source that could not be made.
  auto state = std::make_unique<std::shared_ptr<State>>(state_);
  {
    MutexLock lock(state_->mutex);
    state_->work.push_back(std::move(work));
    if (std::exchange(state_->isScheduled, true)) return;
  }
  GSource* const source = g_idle_source_new();
  g_source_set_priority(source, G_PRIORITY_DEFAULT);
  g_source_set_can_recurse(source, TRUE);
  g_source_set_name(source, "vantorium main queue");
  g_source_set_callback(source, &MainQueue::runNext, state.release(),
                        [](gpointer data) { delete static_cast<std::shared_ptr<State>*>(data); });
  g_source_attach(source, nullptr);
  g_source_unref(source);
}

int MainQueue::runNext(void* data) {
  State& state = **static_cast<std::shared_ptr<State>*>(data);
  std::function<void()> next;
  {
    MutexLock lock(state.mutex);
    if (state.work.empty()) {
      state.isScheduled = false;
      return G_SOURCE_REMOVE;
    }
    next = std::move(state.work.front());
    state.work.pop_front();
  }
  runOrDrop(next);
  return G_SOURCE_CONTINUE;
}

}  // namespace vantorium::gtk
