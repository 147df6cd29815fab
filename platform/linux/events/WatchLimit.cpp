#include "platform/linux/events/WatchLimit.h"

#include <algorithm>
#include <fstream>
#include <limits>

namespace platform {

namespace {

// Unlimited if it cannot be read: the kernel will say when it is enough.
WatchLimit limitInSetting(const std::string &setting) {
  std::string path = "/proc/sys/" + setting;
  std::replace(path.begin() + 1, path.end(), '.', '/');
  std::uint64_t count = 0;
  if (!(std::ifstream(path) >> count)) {
    count = std::numeric_limits<std::uint64_t>::max();
  }
  return {count, setting};
}

}  // namespace

std::uint64_t WatchLimit::share() const {
  constexpr std::uint64_t leastForOthers = 1024;
  const std::uint64_t forOthers = std::max(count / 10, leastForOthers);
  return count > forOthers ? count - forOthers : 0;
}

WatchLimit currentWatchLimit() {
  return std::min(limitInSetting("fs.inotify.max_user_watches"),
                  limitInSetting("user.max_inotify_watches"),
                  [](const WatchLimit &a, const WatchLimit &b) { return a.count < b.count; });
}

}  // namespace platform
