#include "platform/linux/files/LinuxPosixAccess.h"

#include <cerrno>
#include <unistd.h>

#include <glib.h>

#include "platform/linux/Patience.h"

namespace platform {

int LinuxPosixAccess::access(const std::string &path, int mode) {
  return resultWithin<int>(patience_,
                           [path, mode] { return ::access(path.c_str(), mode) == 0 ? 0 : errno; })
      .value_or(ETIMEDOUT);
}

std::string LinuxPosixAccess::textOfError(int errorNumber) {
  return g_strerror(errorNumber);
}

}  // namespace platform
