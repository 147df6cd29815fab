// Names for Clang's thread-safety attributes, so that the compiler checks which lock or queue
// guards what. Other compilers see nothing.
#pragma once

#include <mutex>

#if defined(__clang__)
#define KTR_ATTRIBUTE(x) __attribute__((x))
#else
#define KTR_ATTRIBUTE(x)
#endif

#define KTR_CAPABILITY(name) KTR_ATTRIBUTE(capability(name))
#define KTR_GUARDED_BY(lock) KTR_ATTRIBUTE(guarded_by(lock))
#define KTR_REQUIRES(lock) KTR_ATTRIBUTE(requires_capability(lock))
#define KTR_EXCLUDES(lock) KTR_ATTRIBUTE(locks_excluded(lock))
#define KTR_ACQUIRE(...) KTR_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define KTR_RELEASE(...) KTR_ATTRIBUTE(release_capability(__VA_ARGS__))
#define KTR_ASSERTS(...) KTR_ATTRIBUTE(assert_capability(__VA_ARGS__))
#define KTR_SCOPED KTR_ATTRIBUTE(scoped_lockable)

namespace platform {

// A cheap, non-recursive lock that the attributes can name.
class KTR_CAPABILITY("lock") Lock {
 public:
  void lock() KTR_ACQUIRE() { mutex_.lock(); }
  void unlock() KTR_RELEASE() { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

class KTR_SCOPED LockGuard {
 public:
  explicit LockGuard(Lock &lock) KTR_ACQUIRE(lock) : lock_(lock) { lock_.lock(); }
  ~LockGuard() KTR_RELEASE() { lock_.unlock(); }
  LockGuard(const LockGuard &) = delete;
  LockGuard &operator=(const LockGuard &) = delete;

 private:
  Lock &lock_;
};

}  // namespace platform
