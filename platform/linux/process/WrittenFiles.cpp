#include "platform/linux/process/WrittenFiles.h"

#include <filesystem>
#include <optional>

#include "platform/linux/files/LinuxFileManager.h"
#include "platform/linux/process/BadgeIcons.h"

platform::OwnFiles filesThatThisProcessWrites(const platform::LinuxUserDefaults &userDefaults) {
  platform::OwnFiles files;
  for (const std::optional<std::string> &directory :
       {platform::LinuxFileManager::groupContainersPath(), userDefaults.directoryPath()}) {
    if (directory) {
      files.directories.push_back(*directory);
    }
  }
  files.pathPrefixes = badgeIconPathPrefixes();
  // A log that is a file, such as that of a session without a journal.
  std::error_code error;
  if (const auto log = std::filesystem::read_symlink("/proc/self/fd/2", error);
      !error && std::filesystem::is_regular_file(log, error)) {
    files.pathPrefixes.push_back(log);
  }
  return files;
}
