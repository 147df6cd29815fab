#include "platform/linux/files/FileLock.h"

#include <cerrno>
#include <sys/file.h>
#include <thread>

namespace platform {

namespace {

// The kernel offers no wait for a file lock that ends by itself, and a wait without an end would
// hang this program behind one that was stopped. So it asks again and again, and sleeps in between.
constexpr std::chrono::milliseconds pollInterval{20};

}  // namespace

int lockFile(int descriptor, std::chrono::milliseconds patience) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    const int error = errno;
    if ((error != EWOULDBLOCK && error != EINTR) || std::chrono::steady_clock::now() >= end) {
      return error;
    }
    std::this_thread::sleep_for(pollInterval);
  }
  return 0;
}

}  // namespace platform
