// References, errors and texts: what all of the C API has in common.
#include <cstdlib>
#include <functional>

#include <vantorium/version.h>

#include "bindings/c/call.hpp"

namespace vantorium::c {

namespace {

thread_local bool isOver = false;  ///< needs no destruction, so it can be asked at any time

/// The last error of a thread, with the handle that stands for it.
class LastError {
 public:
  ~LastError() {
    clear();
    isOver = true;
  }
  void set(const Error& error) {
    auto* const handle = give<vantorium_error>(std::make_shared<Error>(error));
    clear();
    handle_ = handle;
  }
  void clear() {
    if (auto* const old = std::exchange(handle_, nullptr)) HandleTable::shared().release(old);
  }
  vantorium_error* get() const { return handle_; }

 private:
  vantorium_error* handle_ = nullptr;
};

/// Null at the very end of a thread, when others of its destructors still run.
LastError* lastError() {
  if (isOver) return nullptr;
  thread_local LastError last;
  return &last;
}

/// A property of the error; null for what is none.
template <typename Property>
const char* textOf(vantorium_error* error, Property property) {
  return call<const char*>(nullptr, [&] { return std::invoke(property, *object(error, "error")).c_str(); });
}

}  // namespace

void note(const Error& error) noexcept {
  auto* const last = lastError();
  if (last == nullptr) return;
  try {
    last->set(error);
  } catch (...) {
    last->clear();  // there was no memory for it
  }
}

void note(const char* what) noexcept {
  try {
    note(VantoriumError::internalError(what));
  } catch (...) {
    if (auto* const last = lastError()) last->clear();
  }
}

}  // namespace vantorium::c

using namespace vantorium;
using namespace vantorium::c;

const char* vantorium_version(void) { return VANTORIUM_VERSION; }

void* vantorium_retain(void* handle) {
  return call<void*>(nullptr, [&] {
    if (!HandleTable::shared().retain(handle))
      refuse("What is to be kept is no handle, or one that was given up.");
    return handle;
  });
}

bool vantorium_release(void* handle) {
  return perform([&] {
    if (handle == nullptr) return;
    switch (HandleTable::shared().release(handle)) {
      case HandleTable::Outcome::otherThread:
        refuse("Hosts and views are given up on the thread that made them.");
      case HandleTable::Outcome::noHandle:
        refuse("What is to be given up is no handle, or was given up before.");
      default:
        return;
    }
  });
}

void vantorium_free_text(char* text) { std::free(text); }

const char* vantorium_error_domain(vantorium_error* error) { return textOf(error, &Error::domain); }

int vantorium_error_code(vantorium_error* error) {
  return call(0, [&] { return object(error, "error")->code(); });
}

const char* vantorium_error_text(vantorium_error* error) {
  return textOf(error, &Error::localizedDescription);
}

const char* vantorium_error_message(vantorium_error* error) { return textOf(error, &Error::errorMessage); }

vantorium_error* vantorium_last_error(void) {
  const auto* const last = lastError();
  return last == nullptr ? nullptr : last->get();
}

void vantorium_clear_last_error(void) {
  if (auto* const last = lastError()) last->clear();
}
