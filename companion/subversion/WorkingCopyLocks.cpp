#include "companion/subversion/WorkingCopyLocks.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>

#include "companion/PathText.h"
#include "companion/subversion/AdministrativeDirectory.h"
#include "platform/linux/files/FileLock.h"

namespace companion {

using platform::FileDescriptor;
using platform::Result;

namespace {

// Much longer than a command holds it, and short enough for a person who waits.
constexpr std::chrono::seconds patience{5};

}  // namespace

Result<FileDescriptor> WorkingCopyLocks::take(const std::string &path) {
  const std::string folder = administeredFolder(path);
  if (const auto place = failures_.find(folder); place != failures_.end()) {
    return Result<FileDescriptor>::failure(place->second);
  }
  FileDescriptor file(open(joinedPath(folder, ".svn").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (file >= 0 && platform::lockFile(file, patience) == EWOULDBLOCK) {
    const std::string reason =
        "another command is changing the properties in the working copy; try again when that is "
        "done";
    failures_.emplace(folder, reason);
    return Result<FileDescriptor>::failure(reason);
  }
  return file;
}

}  // namespace companion
