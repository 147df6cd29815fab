#include "platform/linux/files/LinuxPaths.h"

#include <sys/stat.h>

#include "platform/linux/files/UserDirectories.h"

namespace platform {

namespace {

bool nameTheSameItem(const std::string &a, const std::string &b) {
  struct stat statusOfA {};
  struct stat statusOfB {};
  return stat(a.c_str(), &statusOfA) == 0 && stat(b.c_str(), &statusOfB) == 0 &&
         statusOfA.st_dev == statusOfB.st_dev && statusOfA.st_ino == statusOfB.st_ino;
}

}  // namespace

std::string LinuxPaths::standardizedPath(std::string_view path) const {
  static constexpr std::string_view privatePrefix = "/private";
  std::string standardized =
      lexicallyStandardizedPath(path, path.starts_with('~') ? homeDirectory() : std::string());
  if (standardized.starts_with("/private/")) {
    std::string shorter = standardized.substr(privatePrefix.size());
    if (nameTheSameItem(standardized, shorter)) {
      return shorter;
    }
  }
  return standardized;
}

}  // namespace platform
