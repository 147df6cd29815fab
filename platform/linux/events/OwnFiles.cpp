#include "platform/linux/events/OwnFiles.h"

#include <algorithm>

namespace platform {

namespace {

bool isAtOrBelow(std::string_view path, std::string_view folder) {
  return path.starts_with(folder) &&
         (path.size() == folder.size() || folder.ends_with('/') || path[folder.size()] == '/');
}

}  // namespace

bool OwnFiles::contains(std::string_view path) const {
  return std::any_of(directories.begin(), directories.end(),
                     [path](const std::string &own) { return isAtOrBelow(path, own); }) ||
         std::any_of(pathPrefixes.begin(), pathPrefixes.end(),
                     [path](const std::string &prefix) { return path.starts_with(prefix); });
}

OwnFiles OwnFiles::beneath(std::string_view folder) const {
  OwnFiles files;
  const auto isBeneath = [folder](const std::string &path) { return isAtOrBelow(path, folder); };
  std::copy_if(directories.begin(), directories.end(), std::back_inserter(files.directories),
               isBeneath);
  std::copy_if(pathPrefixes.begin(), pathPrefixes.end(), std::back_inserter(files.pathPrefixes),
               isBeneath);
  return files;
}

}  // namespace platform
