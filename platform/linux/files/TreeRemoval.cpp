#include "platform/linux/files/TreeRemoval.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <glib.h>

#include "platform/Paths.h"
#include "platform/linux/files/DirectoryStream.h"

namespace platform {

namespace {

// Each level needs a file descriptor, of which a process often may have 1,024.
constexpr int greatestDepth = 256;

// A directory of the same file system may be mounted too, which its device does not tell. Before
// Linux 5.8 the kernel does not tell either.
bool isRootOfMount(int directory) {
  struct statx status {};
  return statx(directory, "", AT_EMPTY_PATH, 0, &status) == 0 &&
         (status.stx_attributes & status.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0;
}

class Removal {
 public:
  Removal(std::chrono::milliseconds patience, dev_t device)
      : deadline_(std::chrono::steady_clock::now() + patience), device_(device) {}

  // The error number; 0 if the entry is gone.
  int removeEntry(int parent, const char *name, int depth) {
    if (std::chrono::steady_clock::now() > deadline_) {
      return ETIMEDOUT;
    }
    if (unlinkat(parent, name, 0) == 0) {
      return 0;
    }
    return errno == EISDIR ? removeDirectory(parent, name, depth) : errno;
  }

 private:
  int removeDirectory(int parent, const char *name, int depth) {
    if (depth > greatestDepth) {
      return ELOOP;
    }
    const DirectoryStream directory = openDirectory(parent, name, LastLink::refuse);
    if (directory == nullptr) {
      // Nothing has to be read of an empty one.
      const int error = errno;
      return unlinkat(parent, name, AT_REMOVEDIR) == 0 ? 0 : error;
    }
    struct stat status {};
    if (fstat(dirfd(directory.get()), &status) != 0) {
      return errno;
    }
    if (status.st_dev != device_ || isRootOfMount(dirfd(directory.get()))) {
      return EXDEV;
    }
    int error = removeContents(directory.get(), depth);
    if (error == 0 && unlinkat(parent, name, AT_REMOVEDIR) != 0) {
      error = errno;
    }
    if (error != 0) {
      const timespec dates[] = {status.st_atim, status.st_mtim};
      futimens(dirfd(directory.get()), dates);
    }
    return error;
  }

  // What cannot be removed keeps nothing else from it.
  int removeContents(DIR *directory, int depth) {
    int firstError = 0;
    while (const dirent *entry = nextEntry(directory)) {
      const int error = removeEntry(dirfd(directory), entry->d_name, depth + 1);
      if (error == ETIMEDOUT) {
        return error;
      }
      if (firstError == 0) {
        firstError = error;
      }
    }
    return firstError;
  }

  const std::chrono::steady_clock::time_point deadline_;
  const dev_t device_;
};

}  // namespace

Outcome removeTree(const std::string &path, std::chrono::milliseconds patience) {
  const std::string parentPath(parentOfPath(path));
  const std::string name = path.substr(path.rfind('/') + 1);
  const DirectoryStream parent = openDirectory(AT_FDCWD, parentPath.c_str(), LastLink::follow);
  struct stat status {};
  if (parent == nullptr || fstat(dirfd(parent.get()), &status) != 0) {
    return Outcome::failure(g_strerror(errno));
  }
  Removal removal(patience, status.st_dev);
  const int error = removal.removeEntry(dirfd(parent.get()), name.c_str(), 0);
  return error == 0 ? Outcome(Done()) : Outcome::failure(g_strerror(error));
}

}  // namespace platform
