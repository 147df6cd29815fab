#include "platform/linux/files/DurableDirectories.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/files/SpareDescriptor.h"

namespace platform {

namespace {

// For paths that do not end in "/".
std::string folderOf(const std::string &path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

int flushDirectory(const std::string &path) {
  const FileWithSpareDescriptor directory(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const int error = directory < 0 || fsync(directory) != 0 ? errno : 0;
  return error == EACCES || error == EINVAL || error == ENOTSUP ? 0 : error;
}

bool isDirectory(const std::string &path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

int makeDurableDirectory(const std::string &path) {
  for (std::size_t end = path.find('/', 1); !isDirectory(path); end = path.find('/', end + 1)) {
    const std::string part = path.substr(0, end);
    if (mkdir(part.c_str(), 0700) == 0) {
      if (const int error = flushDirectoryOfFile(part); error != 0) {
        return error;
      }
    } else if (const int error = errno; error != EEXIST && !isDirectory(part)) {
      return error;
    }
    if (end == std::string::npos) {
      return isDirectory(path) ? 0 : ENOTDIR;
    }
  }
  return 0;
}

int flushDirectoryOfFile(const std::string &path) {
  return flushDirectory(folderOf(path));
}

}  // namespace platform
