#pragma once

#include "platform/FileManager.h"

namespace platform {

// Group containers lie in "group-containers" in the user's data directory. Directories are created
// with mode 0700.
class LinuxFileManager final : public FileManager {
 public:
  std::optional<FileURL> containerURLForSecurityApplicationGroupIdentifier(
      const std::string &groupIdentifier) override;
  bool fileExistsAtPath(const std::string &path) override;
  Outcome createDirectoryWithIntermediates(const FileURL &url) override;

  // The folder of all group containers; none without a home.
  static std::optional<std::string> groupContainersPath();
};

}  // namespace platform
