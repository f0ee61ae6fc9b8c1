#include "platform/net/http_library.hpp"

#include <curl/curl.h>

#include <cstdlib>
#include <utility>

namespace vantorium {

HTTPLibrary& HTTPLibrary::shared() {
  static auto* const library = [] {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    // Registered after the TLS library's own handler, so it runs before that one.
    std::atexit([] { shared().shutdownAll(); });
    return new HTTPLibrary;  // never deleted: a session may outlive any static
  }();
  return *library;
}

void HTTPLibrary::add(const void* session, std::function<void()> shutdown) {
  const MutexLock lock(mutex_);
  sessions_.emplace(session, std::move(shutdown));
}

void HTTPLibrary::remove(const void* session) {
  const MutexLock lock(mutex_);
  sessions_.erase(session);
}

void HTTPLibrary::shutdownAll() {
  const MutexLock lock(mutex_);  // or a session could be freed while it is being shut down
  for (const auto& [session, shutdown] : sessions_) shutdown();
}

}  // namespace vantorium
