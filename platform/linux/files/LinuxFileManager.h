#pragma once

#include <chrono>

#include "platform/FileManager.h"

namespace platform {

// Group containers lie in "group-containers" in the user's data directory. Directories are created
// with mode 0700.
class LinuxFileManager final : public FileManager {
 public:
  // `removalPatience` is how long one removal may take. A second removes some 100,000 files, and
  // whoever waits for it, at a menu, notices no more than a delay.
  explicit LinuxFileManager(std::chrono::milliseconds removalPatience = std::chrono::seconds(1))
      : removalPatience_(removalPatience) {}

  std::optional<FileURL> containerURLForSecurityApplicationGroupIdentifier(
      const std::string &groupIdentifier) override;
  bool fileExistsAtPath(const std::string &path) override;
  Outcome createDirectoryWithIntermediates(const FileURL &url) override;
  Outcome visitContentsOfDirectory(
      const FileURL &url, const std::function<bool(const DirectoryEntry &)> &visit) override;
  Outcome removeItem(const FileURL &url) override;

  // The folder of all group containers; none without a home.
  static std::optional<std::string> groupContainersPath();

 private:
  const std::chrono::milliseconds removalPatience_;
};

}  // namespace platform
