#include "platform/linux/spawner/ForkedProcess.h"

#include <algorithm>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/resource.h>
#include <unistd.h>

namespace platform {

namespace {

int greatestFileCount() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  return static_cast<int>(std::min<rlim_t>(limit.rlim_cur, INT_MAX));
}

}  // namespace

void restoreSignals() {
  for (int number = 1; number < SIGRTMIN; ++number) {
    std::signal(number, SIG_DFL);  // SIGKILL and SIGSTOP stay as they are
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

void closeWhenAProgramIsRun(int firstFile) {
  if (close_range(static_cast<unsigned>(firstFile), UINT_MAX, CLOSE_RANGE_CLOEXEC) == 0) {
    return;
  }
  // A kernel before 5.11.
  for (int file = firstFile; file < greatestFileCount(); ++file) {
    fcntl(file, F_SETFD, FD_CLOEXEC);
  }
}

int keepOnly(int file) {
  constexpr int kept = STDERR_FILENO + 1;
  if (file != kept) {
    dup2(file, kept);
  }
  fcntl(kept, F_SETFD, FD_CLOEXEC);
  if (close_range(kept + 1, UINT_MAX, 0) != 0) {
    // A kernel before 5.9.
    for (int other = kept + 1; other < greatestFileCount(); ++other) {
      close(other);
    }
  }
  return kept;
}

}  // namespace platform
