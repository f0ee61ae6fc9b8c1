#pragma once

#include <functional>
#include <string>

#include <vantorium/vantorium.h>

namespace vantorium::testing {

/// A handle that is given up with the scope.
template <typename Handle>
class Owned {
 public:
  explicit Owned(Handle* handle) : handle_(handle) {}
  ~Owned() { vantorium_release(handle_); }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  operator Handle*() const { return handle_; }  // NOLINT(google-explicit-constructor): stands for the handle

 private:
  Handle* handle_;
};

/// The text of an error; empty for none.
inline std::string textOf(vantorium_error* error) {
  return error == nullptr ? "" : vantorium_error_text(error);
}

/// A text of the SDK's, freed.
inline std::string taken(char* text) {
  std::string copy = text == nullptr ? "" : text;
  vantorium_free_text(text);
  return copy;
}

/// What a completion was told, and what became of its data.
struct Told {
  int calls = 0, frees = 0;
  bool success = false;
  int code = 0;
  std::string text;
  std::function<void()> then;  ///< done inside the completion

  static void complete(void* data, bool success, vantorium_error* error) {
    auto& told = *static_cast<Told*>(data);
    ++told.calls;
    told.success = success;
    told.code = error == nullptr ? 0 : vantorium_error_code(error);
    told.text = textOf(error);
    if (told.then) told.then();
  }
  static void free(void* data) { ++static_cast<Told*>(data)->frees; }
  bool isOver() const { return calls == 1 && frees == 1; }
};

}  // namespace vantorium::testing
