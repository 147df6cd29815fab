#include "platform/linux/spawner/ForkedProcess.h"

#include <climits>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace platform {

void restoreSignals() {
  for (int number = 1; number < SIGRTMIN; ++number) {
    std::signal(number, SIG_DFL);  // SIGKILL and SIGSTOP stay as they are
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

void endWithParent(pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    std::_Exit(EXIT_FAILURE);
  }
}

void closeWhenAProgramIsRun(int firstFile) {
  if (close_range(static_cast<unsigned>(firstFile), UINT_MAX, CLOSE_RANGE_CLOEXEC) == 0) {
    return;
  }
  // A kernel before 5.11.
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  for (int file = firstFile; static_cast<rlim_t>(file) < limit.rlim_cur; ++file) {
    fcntl(file, F_SETFD, FD_CLOEXEC);
  }
}

}  // namespace platform
