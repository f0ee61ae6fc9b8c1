#pragma once

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

#include "bindings/c/call.hpp"

namespace vantorium::c {

/// The application's own pointer, freed once.
class UserData {
 public:
  UserData(void* data, vantorium_callback free) : data_(data), free_(free) {}
  ~UserData() { freeNow(); }
  UserData(const UserData&) = delete;
  UserData& operator=(const UserData&) = delete;

  void* get() const { return data_; }
  void freeNow() {
    if (const auto free = std::exchange(free_, nullptr)) free(data_);
  }

 private:
  void* data_;
  vantorium_callback free_;
};

/// A function of the application that is called at most once, on whatever thread; then, or when it is certain
/// that it never will be, its data is freed.
template <typename Function>
class Callback {
 public:
  Callback(Function function, void* data, vantorium_callback free)
      : state_(std::make_shared<State>(function, data, free)) {}

  /// Has `invoke` called with the function and the data, unless that happened before or there is no function.
  template <typename Invoke>
  void once(Invoke invoke) const {
    if (state_->isCalled.exchange(true)) return;
    if (state_->function != nullptr) invoke(state_->function, state_->data.get());
    state_->data.freeNow();
  }

 private:
  struct State {
    State(Function call, void* given, vantorium_callback free) : function(call), data(given, free) {}
    std::atomic<bool> isCalled = false;
    Function function;
    UserData data;
  };
  std::shared_ptr<State> state_;
};

/// A completion of the application as one of the SDK.
inline Vantorium::Completion toCompletion(const Callback<vantorium_completion>& callback) {
  return [callback](bool success, const std::optional<Error>& error) {
    callback.once([&](vantorium_completion completion, void* data) {
      const auto lent = lend(error);
      completion(data, success, lent.get());
    });
  };
}

/// The last error of this thread as an object of its own: the callback that hears of it may cause another.
inline std::shared_ptr<Error> whyRefused() { return objectIfAny(vantorium_last_error(), "error"); }

/// Runs the body of a function that ends with a completion of the application: `begin` is given the SDK's
/// kind of it. What is refused, or thrown otherwise, is told to the completion by `fail`.
template <typename Function, typename Begin, typename Fail>
void beginWith(Function completion, void* data, vantorium_callback free, Begin begin, Fail fail) noexcept {
  std::optional<Callback<Function>> callback;
  const bool hasBegun = perform([&] {
    callback.emplace(completion, data, free);
    begin(*callback);
  });
  if (hasBegun) return;
  if (callback) {
    perform([&] { fail(*callback); });
  } else if (free != nullptr) {
    free(data);  // there was no memory even for that
  }
}

/// Likewise, for the usual completion.
template <typename Begin>
void begin(vantorium_completion completion, void* data, vantorium_callback free, Begin body) noexcept {
  beginWith(
      completion, data, free,
      [&](const Callback<vantorium_completion>& callback) { body(toCompletion(callback)); },
      [](const Callback<vantorium_completion>& callback) {
        callback.once([](vantorium_completion completionOfCaller, void* given) {
          const Lent<vantorium_error> error(whyRefused());
          completionOfCaller(given, false, error.get());
        });
      });
}

}  // namespace vantorium::c
