#include "platform/linux/confinement/CoreFiles.h"

#include <cerrno>
#include <sys/resource.h>

#include <glib.h>

namespace platform {

Outcome forbidCoreFiles() {
  const rlimit none{0, 0};
  return setrlimit(RLIMIT_CORE, &none) == 0 ? Outcome(Done()) : Outcome::failure(g_strerror(errno));
}

}  // namespace platform
