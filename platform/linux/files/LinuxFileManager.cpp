#include "platform/linux/files/LinuxFileManager.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

#include <glib.h>

#include "platform/linux/files/DirectoryStream.h"
#include "platform/linux/files/DurableDirectories.h"
#include "platform/linux/files/TreeRemoval.h"
#include "platform/linux/files/UserDirectories.h"

namespace platform {

namespace {

using SystemTime = Clock::TimePoint;

// Times that the clock cannot count, 292 years from now, are the last or first that it can.
SystemTime pointInTime(const timespec &time) {
  using std::chrono::seconds;
  const auto limit = std::chrono::duration_cast<seconds>(SystemTime::duration::max()).count() - 1;
  const auto whole = std::clamp<std::int64_t>(time.tv_sec, -limit, limit);
  return SystemTime(seconds(whole) + std::chrono::nanoseconds(time.tv_nsec));
}

std::optional<SystemTime> modificationDate(DIR *directory, const char *name) {
  struct stat status {};
  if (fstatat(dirfd(directory), name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return std::nullopt;
  }
  return pointInTime(status.st_mtim);
}

}  // namespace

std::optional<FileURL> LinuxFileManager::containerURLForSecurityApplicationGroupIdentifier(
    const std::string &groupIdentifier) {
  const std::optional<std::string> containers = groupContainersPath();
  if (!containers) {
    return std::nullopt;
  }
  return FileURL::fromPath(*containers + "/" + groupIdentifier, /*isDirectory=*/true);
}

std::optional<std::string> LinuxFileManager::groupContainersPath() {
  std::optional<std::string> path = userDataDirectory();
  if (path) {
    *path += "/group-containers";
  }
  return path;
}

bool LinuxFileManager::fileExistsAtPath(const std::string &path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0;
}

Outcome LinuxFileManager::createDirectoryWithIntermediates(const FileURL &url) {
  const int error = makeDurableDirectory(url.path());
  return error == 0 ? Outcome(Done()) : Outcome::failure(g_strerror(error));
}

Outcome LinuxFileManager::visitContentsOfDirectory(
    const FileURL &url, const std::function<bool(const DirectoryEntry &)> &visit) {
  const DirectoryStream directory = openDirectory(AT_FDCWD, url.path().c_str(), LastLink::refuse);
  if (directory == nullptr) {
    return Outcome::failure(g_strerror(errno));
  }
  while (const dirent *entry = nextEntry(directory.get())) {
    const char *name = entry->d_name;
    if (!visit({name, modificationDate(directory.get(), name)})) {
      break;
    }
  }
  return Done();
}

Outcome LinuxFileManager::removeItem(const FileURL &url) {
  return removeTree(url.path(), removalPatience_);
}

}  // namespace platform
