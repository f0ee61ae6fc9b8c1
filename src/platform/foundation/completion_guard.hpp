#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <new>
#include <tuple>
#include <type_traits>
#include <utility>

namespace vantorium {

/// Holds a completion and sees to it that it is called once, whatever becomes of the work that should call
/// it. Calling the guard calls through; further calls do nothing. When the last copy goes and nobody has
/// called, as when a piece of work is dropped by an exception, the completion is called with the fallback
/// arguments, on the thread of that moment. Copies share the one completion. Any thread.
///
///     CompletionGuard guard(std::move(completion), false, VantoriumError::internalError("…"));
///     queue->async([guard] { guard(work(), std::nullopt); });
template <typename... Args>
class CompletionGuard {
 public:
  using Completion = std::function<void(Args...)>;

  /// A null completion is never called. Without memory for the guard the completion is called at once, with
  /// the fallback: nothing is thrown but what the completion throws then.
  explicit CompletionGuard(Completion completion, std::type_identity_t<std::decay_t<Args>>... fallback) {
    try {
      state_ = std::make_shared<State>(std::move(completion), std::move(fallback)...);
    } catch (const std::bad_alloc&) {
      if (completion) completion(std::move(fallback)...);
    }
  }

  /// False when there was no memory for the guard: the completion has been called then.
  explicit operator bool() const { return state_ != nullptr; }
  /// Calls the completion, unless it has been called. What it throws comes through. What it holds is let go
  /// of afterwards, even while copies of the guard are left.
  void operator()(std::type_identity_t<Args>... args) const {
    if (!state_ || state_->isCalled.exchange(true)) return;
    const Completion completion = std::exchange(state_->completion, nullptr);
    if (completion) completion(std::forward<Args>(args)...);
  }

 private:
  struct State {
    State(Completion&& toCall, std::decay_t<Args>&&... arguments)
        : completion(std::move(toCall)), fallback(std::move(arguments)...) {}
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
      if (!completion) return;
      try {
        std::apply(completion, std::move(fallback));
      } catch (...) {  // NOLINT(bugprone-empty-catch): there is nobody left to tell
      }
    }

    std::atomic<bool> isCalled = false;
    Completion completion;
    std::tuple<std::decay_t<Args>...> fallback;
  };

  std::shared_ptr<State> state_;
};

template <typename... Args, typename... Fallback>
CompletionGuard(std::function<void(Args...)>, Fallback...) -> CompletionGuard<Args...>;

}  // namespace vantorium
