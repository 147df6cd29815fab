#include "platform/linux/EndWithParent.h"

#include <csignal>
#include <cstdlib>
#include <sys/prctl.h>
#include <unistd.h>

namespace platform {

void endWithParent(pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    std::_Exit(EXIT_FAILURE);
  }
}

}  // namespace platform
