#pragma once

#include <memory>

#include <vantorium/dispatch_queue.hpp>

namespace vantorium::gtk {

/// The default main context as a queue. Work is run one item per dispatch, so that input and drawing get
/// their turn and a nested main loop goes on with the items that follow.
class MainQueue final : public DispatchQueue {
 public:
  MainQueue();
  ~MainQueue() override;

  void async(std::function<void()> work) override;

 private:
  struct State;
  static int runNext(void* data);

  std::shared_ptr<State> state_;
};

}  // namespace vantorium::gtk
