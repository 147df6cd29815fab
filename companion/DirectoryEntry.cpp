#include "companion/DirectoryEntry.h"

#include <cerrno>
#include <sys/stat.h>

#include <glib.h>

namespace companion {

namespace {

// The number of the system's error; 0 if there is an entry.
int errorOfLook(const std::string &path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 ? 0 : errno;
}

}  // namespace

bool entryExists(const std::string &path) {
  const int error = errorOfLook(path);
  return error != ENOENT && error != ENOTDIR && error != ENAMETOOLONG;
}

std::string reasonForAbsence(const std::string &path) {
  const int error = errorOfLook(path);
  return error == 0 ? "" : g_strerror(error);
}

}  // namespace companion
