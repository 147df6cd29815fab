#include "platform/linux/events/WatchLog.h"

#include <string>
#include <utility>

#include <glib.h>

namespace platform {

WatchLog::WatchLog(SystemLogs &systemLogs)
    : log_(systemLogs.makeLog("com.morvane.v3.finder", "Events")) {}

void WatchLog::noteWatchLimit(const WatchLimit &limit) {
  {
    const LockGuard guard(lock_);
    if (std::exchange(lastLimit_, limit.count) == limit.count) {
      return;
    }
  }
  log_->write(LogLevel::error,
              "Not all folders are watched: {} allows {} watches, some of which are left to other "
              "programs. Badges in the rest are only brought up to date when something else "
              "changes. To watch more, raise {}, for example with sysctl.",
              {publicArgument(limit.setting), publicArgument(std::to_string(limit.count)),
               publicArgument(limit.setting)});
}

void WatchLog::noteNoInstance(int error) {
  {
    const LockGuard guard(lock_);
    if (!std::exchange(hasInstance_, false)) {
      return;
    }
  }
  log_->write(LogLevel::error,
              "No folder can be watched: {}. If too many programs watch folders, raise "
              "fs.inotify.max_user_instances, for example with sysctl.",
              {publicArgument(g_strerror(error))});
}

void WatchLog::noteInstance() {
  const LockGuard guard(lock_);
  hasInstance_ = true;
}

void WatchLog::noteUnlistedFolders(int error) {
  {
    const LockGuard guard(lock_);
    if (!std::exchange(listsFolders_, false)) {
      return;
    }
  }
  log_->write(LogLevel::error,
              "Not all folders can be looked into for now: {}. It is tried again until they can.",
              {publicArgument(g_strerror(error))});
}

void WatchLog::noteListedFolders() {
  const LockGuard guard(lock_);
  listsFolders_ = true;
}

void WatchLog::noteLostEvents() {
  log_->write(LogLevel::standard,
              "The kernel has lost events, so every working copy counts as changed.", {});
}

}  // namespace platform
