// Tells the user that not everything can be watched, and which setting to raise: once for each
// limit that is run into, whatever the number of streams and folders. From any thread.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/SystemLog.h"
#include "platform/ThreadSafety.h"
#include "platform/linux/events/WatchLimit.h"

namespace platform {

class WatchLimitLog {
 public:
  explicit WatchLimitLog(SystemLogs &systemLogs);

  void noteWatchLimit(const WatchLimit &limit) KTR_EXCLUDES(lock_);

  // inotify cannot be had at all, for the reason in errno's value `error`.
  void noteNoInstance(int error);

 private:
  const std::unique_ptr<SystemLog> log_;
  Lock lock_;
  std::uint64_t lastLimit_ KTR_GUARDED_BY(lock_) = 0;
};

}  // namespace platform
