// A property that may be read and replaced from any thread; a read never sees half a value.
#pragma once

#include <utility>

#include "platform/ThreadSafety.h"

template <typename T>
class AtomicProperty {
 public:
  T load() const {
    platform::LockGuard guard(lock_);
    return value_;
  }

  void store(T value) {
    platform::LockGuard guard(lock_);
    std::swap(value_, value);
  }

 private:
  mutable platform::Lock lock_;
  T value_ KTR_GUARDED_BY(lock_){};
};
