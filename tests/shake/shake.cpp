// Loaded ahead of the C library by scripts/shake: threads pause now and then where they hand something over,
// so that a test which takes for granted who comes first, or how soon, fails. No such test is seen on an idle
// machine.
#include <dlfcn.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string_view>

namespace {

std::uint32_t seed() {
  static const char* const given = std::getenv("SHAKE_SEED");
  static const auto value = static_cast<std::uint32_t>(given ? std::strtoul(given, nullptr, 10) : 1);
  return value;
}

/// Pausing only the main thread, or only the others, shows what pauses of all would even out.
bool isChosen() {
  static const char* const given = std::getenv("SHAKE_THREADS");
  static const std::string_view who = given ? given : "all";
  thread_local const bool isMain = gettid() == getpid();
  return who == "all" || (who == "main") == isMain;
}

std::uint32_t nextRandom() {
  static std::atomic<std::uint32_t> threads{0};
  thread_local std::uint32_t state = (seed() * 2654435761U) ^ (++threads * 40503U) ^ 1U;
  state ^= state << 13U;
  state ^= state >> 17U;
  state ^= state << 5U;
  return state;
}

/// Mostly goes on at once; one time in 30 it pauses for up to 4 ms, one in 400 for up to 80 ms.
void pauseAtTimes() {
  if (!isChosen()) return;
  const std::uint32_t random = nextRandom();
  long longest = 0;
  if (random % 30 == 0) longest = 4'000'000;
  if (random % 400 == 0) longest = 80'000'000;
  if (longest == 0) return;
  const timespec pause{.tv_sec = 0, .tv_nsec = static_cast<long>(nextRandom()) % longest};
  nanosleep(&pause, nullptr);
}

template <typename Function>
Function* following(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
  static auto* const unlock = following<int(pthread_mutex_t*)>("pthread_mutex_unlock");
  const int result = unlock(mutex);
  pauseAtTimes();
  return result;
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                   void* data) noexcept {
  using Create = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static auto* const create = following<Create>("pthread_create");
  const int result = create(thread, attributes, run, data);
  pauseAtTimes();
  return result;
}

ssize_t send(int socket, const void* bytes, size_t size, int flags) {
  static auto* const forward = following<ssize_t(int, const void*, size_t, int)>("send");
  const ssize_t sent = forward(socket, bytes, size, flags);
  pauseAtTimes();
  return sent;
}

ssize_t recv(int socket, void* bytes, size_t size, int flags) {
  static auto* const receive = following<ssize_t(int, void*, size_t, int)>("recv");
  pauseAtTimes();
  return receive(socket, bytes, size, flags);
}

}  // extern "C"
