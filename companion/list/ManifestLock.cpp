#include "companion/list/ManifestLock.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include <glib.h>

#include "companion/PathText.h"
#include "platform/linux/files/FileLock.h"

namespace companion {

using platform::FileURL;
using platform::Result;

namespace {

Result<ManifestLock> failure(const std::string &path, const std::string &reason) {
  return Result<ManifestLock>::failure(
      "the list of working copies cannot be locked: " + displayedPath(path) + ": " + reason);
}

}  // namespace

Result<ManifestLock> ManifestLock::take(const FileURL &sharedDirectory,
                                        std::chrono::milliseconds patience) {
  const std::string path = sharedDirectory.appendingPathComponent("Manifest.lock").path();
  const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (descriptor < 0) {
    return failure(path, g_strerror(errno));
  }
  ManifestLock lock(descriptor);
  if (const int error = platform::lockFile(descriptor, patience); error != 0) {
    return failure(path,
                   error == EWOULDBLOCK ? "another program holds the lock" : g_strerror(error));
  }
  return lock;
}

ManifestLock::ManifestLock(ManifestLock &&other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

ManifestLock::~ManifestLock() {
  if (descriptor_ >= 0) {
    close(descriptor_);
  }
}

}  // namespace companion
