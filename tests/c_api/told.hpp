#pragma once

#include <functional>
#include <string>
#include <vector>

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

/// A delegate that notes what it hears.
struct Listener {
  std::vector<std::string> lines;
  int frees = 0;
  std::function<void()> then;  ///< done inside each method

  void note(const std::string& line) {
    lines.push_back(line);
    if (then) then();
  }
  static Listener& of(void* data) { return *static_cast<Listener*>(data); }
  static vantorium_delegate_methods methods() {
    return {
        .size = sizeof(vantorium_delegate_methods),
        .did_receive_reward =
            [](void* data, const char* placement, std::int64_t amount) {
              of(data).note("reward " + std::string(placement) + " " + std::to_string(amount));
            },
        .did_precache = [](void* data,
                           const char* placement) { of(data).note("precached " + std::string(placement)); },
        .did_fail_precache =
            [](void* data, const char* placement, vantorium_error* error) {
              of(data).note("failed " + std::string(placement) + " " +
                            std::to_string(vantorium_error_code(error)));
            },
        .did_receive_click = [](void* data,
                                const char* placement) { of(data).note("click " + std::string(placement)); },
        .did_configure = [](void* data) { of(data).note("configured"); },
        .did_fail_configure =
            [](void* data, vantorium_error* error) {
              of(data).note("unconfigured " + std::to_string(vantorium_error_code(error)));
            },
    };
  }
  static void free(void* data) { ++of(data).frees; }
};

}  // namespace vantorium::testing
