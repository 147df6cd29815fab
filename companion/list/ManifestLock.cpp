#include "companion/list/ManifestLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include <glib.h>

#include "companion/PathText.h"

namespace companion {

using platform::FileURL;
using platform::Result;

namespace {

// The kernel offers no wait for a file lock that ends by itself, and a wait without an end would
// hang this program behind one that was stopped. So it asks again and again, and sleeps in between.
constexpr std::chrono::milliseconds pollInterval{20};

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
  const auto end = std::chrono::steady_clock::now() + patience;
  while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    const int error = errno;
    if (error != EWOULDBLOCK && error != EINTR) {
      return failure(path, g_strerror(error));
    }
    if (std::chrono::steady_clock::now() >= end) {
      return failure(path, "another program holds the lock");
    }
    std::this_thread::sleep_for(pollInterval);
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
