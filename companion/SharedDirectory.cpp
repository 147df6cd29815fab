#include "companion/SharedDirectory.h"

#include <cerrno>
#include <sys/stat.h>

#include "platform/SharedDirectory.h"
#include "platform/linux/LinuxFileManager.h"

namespace companion {

using platform::FileURL;
using platform::Result;

Result<FileURL> sharedDirectoryURL() {
  platform::LinuxFileManager fileManager;
  std::optional<FileURL> directory = platform::sharedDirectoryURL(fileManager);
  if (!directory) {
    return Result<FileURL>::failure(
        "there is no place for the list of working copies: neither XDG_DATA_HOME nor HOME is an "
        "absolute path");
  }
  return *std::move(directory);
}

bool entryExists(const std::string &path) {
  struct stat status {};
  // What cannot be looked at may exist, so only a clear answer counts as none.
  return lstat(path.c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

}  // namespace companion
