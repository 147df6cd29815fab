#include "companion/DirectoryEntry.h"

#include <cerrno>
#include <sys/stat.h>

#include <glib.h>

namespace companion {

namespace {

// The number of the system's error; 0 if there is an entry.
int look(const std::string &path, struct stat &status) {
  return lstat(path.c_str(), &status) == 0 ? 0 : errno;
}

int errorOfLook(const std::string &path) {
  struct stat status {};
  return look(path, status);
}

}  // namespace

bool entryExists(const std::string &path) {
  const int error = errorOfLook(path);
  return error != ENOENT && error != ENOTDIR && error != ENAMETOOLONG;
}

bool isFolder(const std::string &path) {
  struct stat status {};
  return look(path, status) == 0 && S_ISDIR(status.st_mode);
}

EntryState entryState(const std::string &path) {
  struct stat status {};
  if (look(path, status) != 0) {
    return {};
  }
  EntryState state;
  state.type = status.st_mode & S_IFMT;
  if (!S_ISDIR(status.st_mode)) {
    state.size = status.st_size;
    state.modified = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
  }
  return state;
}

std::string reasonForAbsence(const std::string &path) {
  const int error = errorOfLook(path);
  return error == 0 ? "" : g_strerror(error);
}

}  // namespace companion
