#include "platform/SharedDirectory.h"

namespace platform {

std::optional<FileURL> sharedDirectoryURL(FileManager &fileManager) {
  const std::optional<FileURL> container =
      fileManager.containerURLForSecurityApplicationGroupIdentifier(applicationGroupIdentifier);
  if (!container) {
    return std::nullopt;
  }
  return container->appendingPathComponent("FinderSync", /*isDirectory=*/true);
}

}  // namespace platform
