#include "platform/linux/confinement/CoreFiles.h"

#include <algorithm>
#include <cerrno>
#include <sys/resource.h>

#include <glib.h>

namespace platform {

Outcome forbidCoreFiles() {
  // One byte, in which no core fits: where cores go to a program, such as that of systemd, the
  // kernel minds no other limit, zero included (core(5)).
  rlimit limit{};
  getrlimit(RLIMIT_CORE, &limit);
  limit.rlim_max = std::min<rlim_t>(limit.rlim_max, 1);
  limit.rlim_cur = limit.rlim_max;
  return setrlimit(RLIMIT_CORE, &limit) == 0 ? Outcome(Done())
                                             : Outcome::failure(g_strerror(errno));
}

}  // namespace platform
