// References, errors and texts: what all of the C API has in common.
#include <cstdlib>
#include <functional>

#include <vantorium/version.h>

#include "bindings/c/call.hpp"

namespace vantorium::c {

namespace {

/// The last error of a thread, with the handle that stands for it.
class LastError {
 public:
  ~LastError() { clear(); }
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

LastError& lastError() {
  thread_local LastError last;
  return last;
}

/// A property of the error; null for what is none.
template <typename Property>
const char* textOf(vantorium_error* error, Property property) {
  return call<const char*>(nullptr, [&] { return std::invoke(property, *object(error, "error")).c_str(); });
}

}  // namespace

void note(const Error& error) noexcept {
  try {
    lastError().set(error);
  } catch (const std::exception&) {
    lastError().clear();  // there was no memory for it
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
      case HandleTable::Release::done:
        return;
      case HandleTable::Release::noHandle:
        refuse("What is to be given up is no handle, or was given up before.");
      case HandleTable::Release::wrongThread:
        refuse("Hosts and views are given up on the thread that made them.");
    }
  });
}

void vantorium_free_text(char* text) { std::free(text); }

const char* vantorium_error_domain(vantorium_error* error) { return textOf(error, &Error::domain); }

int vantorium_error_code_of(vantorium_error* error) {
  return call(0, [&] { return object(error, "error")->code(); });
}

const char* vantorium_error_text(vantorium_error* error) {
  return textOf(error, &Error::localizedDescription);
}

const char* vantorium_error_message(vantorium_error* error) { return textOf(error, &Error::errorMessage); }

vantorium_error* vantorium_last_error(void) { return lastError().get(); }

void vantorium_clear_last_error(void) { lastError().clear(); }
