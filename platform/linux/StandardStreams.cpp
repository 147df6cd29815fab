#include "platform/linux/StandardStreams.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace platform {

void prepareStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  // A descriptor that is opened takes the lowest free number. Opened for reading alone, so that
  // writing to a stream that was closed stays an error.
  int descriptor = STDIN_FILENO;
  while (descriptor <= STDERR_FILENO) {
    descriptor = open("/dev/null", O_RDONLY);
    if (descriptor < 0) {
      std::exit(EXIT_FAILURE);  // without a safe standard error nothing can be said
    }
  }
  close(descriptor);
}

}  // namespace platform
