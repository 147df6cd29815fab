#include "platform/linux/events/RootRoad.h"

#include <algorithm>
#include <sys/stat.h>
#include <utility>

#include "platform/linux/events/DirectoryTrees.h"
#include "platform/linux/events/Inotify.h"

namespace platform {

namespace {

bool isDirectory(const std::string &path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// The folder and the name of the entry in it that leads on, for each step from "/" to the root.
std::vector<std::pair<std::string, std::string>> stepsTo(const std::string &rootPath) {
  std::vector<std::pair<std::string, std::string>> steps;
  std::string folder = "/";
  for (std::size_t start = 1; start < rootPath.size();) {
    const std::size_t end = std::min(rootPath.find('/', start), rootPath.size());
    std::string name = rootPath.substr(start, end - start);
    std::string next = entryPath(folder, name);
    steps.emplace_back(std::exchange(folder, std::move(next)), std::move(name));
    start = end + 1;
  }
  return steps;
}

}  // namespace

void RootRoad::take(const std::string &rootPath, const AddWatch &addWatch) {
  const auto watch = [&](const std::string &folder, std::uint32_t mask) {
    const int added = addWatch(folder, mask);
    if (added >= 0 && !hasWatch(added)) {
      watches_.push_back(added);
    }
    return added;
  };
  for (const auto &[folder, name] : stepsTo(rootPath)) {
    watch(folder, Inotify::ownEnd);
    const std::string next = entryPath(folder, name);
    if (isDirectory(next)) {
      continue;
    }
    // It may come between this look and the watch, so there is a look after the watch too.
    last_ = watch(folder, Inotify::ownEnd | Inotify::arrival);
    awaited_ = name;
    if (!isDirectory(next)) {
      return;
    }
  }
}

std::vector<int> RootRoad::leave() {
  last_ = -1;
  awaited_.clear();
  return std::exchange(watches_, {});
}

bool RootRoad::hasWatch(int watch) const {
  return std::find(watches_.begin(), watches_.end(), watch) != watches_.end();
}

bool RootRoad::isTouchedBy(int watch, std::uint32_t mask, std::string_view name) const {
  if (!hasWatch(watch)) {
    return false;
  }
  return name.empty() ? (mask & (Inotify::ownEnd | IN_UNMOUNT)) != 0
                      : watch == last_ && (mask & Inotify::arrival) != 0 && name == awaited_;
}

}  // namespace platform
