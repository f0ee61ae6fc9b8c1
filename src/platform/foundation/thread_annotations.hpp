#pragma once

#include <mutex>

// Clang's thread-safety analysis turns lock rules into compile errors; other compilers see nothing.
#if defined(__clang__)
#define VANTORIUM_ATTRIBUTE(x) __attribute__((x))
#else
#define VANTORIUM_ATTRIBUTE(x)
#endif

#define CAPABILITY(x) VANTORIUM_ATTRIBUTE(capability(x))
#define SCOPED_CAPABILITY VANTORIUM_ATTRIBUTE(scoped_lockable)
#define GUARDED_BY(x) VANTORIUM_ATTRIBUTE(guarded_by(x))
#define REQUIRES(...) VANTORIUM_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) VANTORIUM_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) VANTORIUM_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define RELEASE(...) VANTORIUM_ATTRIBUTE(release_capability(__VA_ARGS__))

namespace vantorium {

/// A mutex that the analysis understands. It is never held while calling out of the object that owns it.
class CAPABILITY("mutex") Mutex {
 public:
  void lock() ACQUIRE() { mutex_.lock(); }
  void unlock() RELEASE() { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

/// Holds a `Mutex` for a scope.
class SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() RELEASE() { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace vantorium
