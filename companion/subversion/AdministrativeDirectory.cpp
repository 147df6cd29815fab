#include "companion/subversion/AdministrativeDirectory.h"

#include "companion/DirectoryEntry.h"
#include "companion/PathText.h"
#include "platform/Paths.h"

namespace companion {

namespace {

bool holdsAdministrativeDirectory(const std::string &folder) {
  return entryExists(joinedPath(folder, ".svn"));
}

}  // namespace

std::string administeredFolder(std::string path) {
  while (!holdsAdministrativeDirectory(path)) {
    if (path == "/") {
      return "";
    }
    path = platform::parentOfPath(path);
  }
  return path;
}

std::string topmostAdministeredFolder(const std::string &path) {
  std::string folder = administeredFolder(path);
  while (!folder.empty() && folder != "/") {
    std::string parent(platform::parentOfPath(folder));
    if (!holdsAdministrativeDirectory(parent)) {
      break;
    }
    folder = std::move(parent);
  }
  return folder;
}

bool isAdministrative(const std::string &path) {
  return (path + "/").find("/.svn/") != std::string::npos;
}

}  // namespace companion
