#include "companion/SharedDirectory.h"

#include "platform/SharedDirectory.h"
#include "platform/linux/files/LinuxFileManager.h"

namespace companion {

using platform::FileURL;
using platform::Result;

Result<FileURL> sharedDirectoryURL() {
  platform::LinuxFileManager fileManager;
  std::optional<FileURL> directory = platform::sharedDirectoryURL(fileManager);
  if (!directory) {
    return Result<FileURL>::failure(
        "there is no place for what is shared with the extension: neither XDG_DATA_HOME nor HOME "
        "is "
        "an absolute path");
  }
  return *std::move(directory);
}

}  // namespace companion
