#include "companion/SharedDirectory.h"

#include <cerrno>
#include <sys/stat.h>

#include "platform/linux/LinuxFileManager.h"

namespace companion {

using platform::FileURL;
using platform::Result;

Result<FileURL> sharedDirectoryURL() {
  const std::optional<FileURL> container =
      platform::LinuxFileManager().containerURLForSecurityApplicationGroupIdentifier(
          "7KQ2M9XR4T.com.morvane.shared");
  if (!container) {
    return Result<FileURL>::failure(
        "there is no place for the list of working copies: neither XDG_DATA_HOME nor HOME is an "
        "absolute path");
  }
  return container->appendingPathComponent("FinderSync", /*isDirectory=*/true);
}

bool entryExists(const std::string &path) {
  struct stat status {};
  // What cannot be looked at may exist, so only a clear answer counts as none.
  return lstat(path.c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

}  // namespace companion
