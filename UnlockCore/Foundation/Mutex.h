// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>

// Clang's thread-safety analysis proves that a guarded field is touched only under its lock; g++
// has none. https://clang.llvm.org/docs/ThreadSafetyAnalysis.html
#ifdef __clang__
#define MARROWBY_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define MARROWBY_THREAD_ANNOTATION(x)
#endif

#define CAPABILITY(x) MARROWBY_THREAD_ANNOTATION(capability(x))
#define SCOPED_CAPABILITY MARROWBY_THREAD_ANNOTATION(scoped_lockable)
#define GUARDED_BY(x) MARROWBY_THREAD_ANNOTATION(guarded_by(x))
#define REQUIRES(...) MARROWBY_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) MARROWBY_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) MARROWBY_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define RELEASE(...) MARROWBY_THREAD_ANNOTATION(release_capability(__VA_ARGS__))

namespace marrowby {

/// A plain, non-recursive lock that the analysis knows. Use MutexLock.
class CAPABILITY("mutex") Mutex {
  public:
    void lock() ACQUIRE() { mutex_.lock(); }
    void unlock() RELEASE() { mutex_.unlock(); }

  private:
    std::mutex mutex_;
};

/// Holds a Mutex for its own lifetime.
class SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~MutexLock() RELEASE() { mutex_.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

  private:
    Mutex& mutex_;
};

}  // namespace marrowby
