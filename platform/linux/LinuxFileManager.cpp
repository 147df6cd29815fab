#include "platform/linux/LinuxFileManager.h"

#include <cerrno>
#include <sys/stat.h>

#include <glib.h>

#include "platform/linux/UserDirectories.h"

namespace platform {

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
  if (g_mkdir_with_parents(url.path().c_str(), 0700) != 0) {
    return Outcome::failure(g_strerror(errno));
  }
  return Done();
}

}  // namespace platform
