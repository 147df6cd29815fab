// Tells the user what keeps changes from being noticed, and which setting helps: once for each
// limit that is run into, whatever the number of streams and folders. From any thread.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/SystemLog.h"
#include "platform/ThreadSafety.h"
#include "platform/linux/events/WatchLimit.h"

namespace platform {

class WatchLog {
 public:
  explicit WatchLog(SystemLogs &systemLogs);

  void noteWatchLimit(const WatchLimit &limit) KTR_EXCLUDES(lock_);

  // inotify cannot be had at all, for the reason in errno's value `error`. Said once until
  // `noteInstance`.
  void noteNoInstance(int error) KTR_EXCLUDES(lock_);
  void noteInstance() KTR_EXCLUDES(lock_);

  // Folders cannot be looked into for now, for the reason in errno's value `error`. Said once until
  // `noteListedFolders`.
  void noteUnlistedFolders(int error) KTR_EXCLUDES(lock_);
  void noteListedFolders() KTR_EXCLUDES(lock_);

  // The kernel's queue was full.
  void noteLostEvents();

 private:
  const std::unique_ptr<SystemLog> log_;
  Lock lock_;
  std::uint64_t lastLimit_ KTR_GUARDED_BY(lock_) = 0;
  bool hasInstance_ KTR_GUARDED_BY(lock_) = true;
  bool listsFolders_ KTR_GUARDED_BY(lock_) = true;
};

}  // namespace platform
