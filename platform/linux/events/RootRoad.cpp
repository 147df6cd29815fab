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

bool isSymbolicLink(const std::string &path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
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
  for (const auto &[folder, name] : stepsTo(rootPath)) {
    if (isSymbolicLink(entryPath(folder, name))) {
      listen(folder, name, addWatch);
    } else {
      watch(folder, Inotify::ownEnd, addWatch);
    }
  }
}

void RootRoad::await(const std::string &rootPath, const AddWatch &addWatch) {
  const auto steps = stepsTo(rootPath);
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const auto &[folder, name] = steps[i];
    const std::string next = entryPath(folder, name);
    const bool isLast = i + 1 == steps.size();
    if (!isLast && isDirectory(next)) {
      continue;
    }
    listen(folder, name, addWatch);
    // It may have come before the folder was listened to, so there is a look after that too.
    if (isLast || !isDirectory(next)) {
      return;
    }
  }
}

void RootRoad::listen(const std::string &folder, const std::string &name,
                      const AddWatch &addWatch) {
  const int added = watch(folder, Inotify::ownEnd | Inotify::arrival, addWatch);
  if (added >= 0) {
    awaited_.emplace_back(added, name);
  }
}

int RootRoad::watch(const std::string &folder, std::uint32_t mask, const AddWatch &addWatch) {
  const int added = addWatch(folder, mask);
  if (added >= 0 && !hasWatch(added)) {
    watches_.push_back(added);
  }
  return added;
}

std::vector<int> RootRoad::leave() {
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
  if (name.empty()) {
    return (mask & (Inotify::ownEnd | IN_UNMOUNT)) != 0;
  }
  return (mask & Inotify::arrival) != 0 &&
         std::any_of(awaited_.begin(), awaited_.end(), [&](const auto &awaited) {
           return awaited.first == watch && awaited.second == name;
         });
}

}  // namespace platform
