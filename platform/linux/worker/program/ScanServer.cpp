#include "platform/linux/worker/program/ScanServer.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <string>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/EndWithParent.h"
#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/worker/ScanMessages.h"
#include "platform/linux/worker/WorkerExitStatus.h"
#include "platform/linux/worker/program/ScanProcess.h"

namespace {

// Waits for the end of the scan. If the extension process ends before, so does the scan.
int waitStatusOf(pid_t scan, const MessageSocket &extension) {
  const platform::FileDescriptor process(static_cast<int>(syscall(SYS_pidfd_open, scan, 0)));
  if (process >= 0) {
    pollfd events[] = {{process, POLLIN, 0}, {extension.descriptor(), 0, 0}};
    while (poll(events, 2, -1) < 0 && errno == EINTR) {
    }
    if (events[0].revents == 0) {
      kill(scan, SIGKILL);
    }
  }
  int status = 0;
  while (waitpid(scan, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

// `receiver` is closed in this process as soon as the scan has it.
ScanExit scanInProcess(const MessageSocket &extension, const ScanRequest &request,
                       std::optional<MessageSocket> receiver, ScanConfinement &confinement) {
  const pid_t server = getpid();
  const pid_t scan = fork();
  if (scan == 0) {
    // It does not outlive the server, and cannot speak for it.
    platform::endWithParent(server);
    close(extension.descriptor());
    _exit(runScan(*receiver, request, confinement));
  }
  receiver.reset();
  if (scan < 0) {
    return {false, workerExitWithoutProcess};
  }
  const int status = waitStatusOf(scan, extension);
  return WIFSIGNALED(status) ? ScanExit{true, WTERMSIG(status)}
                             : ScanExit{false, WEXITSTATUS(status)};
}

}  // namespace

int serveScans(const MessageSocket &extension) {
  ScanConfinement confinement;
  std::string bytes;
  for (;;) {
    std::optional<MessageSocket> receiver;
    switch (extension.receive(&bytes, &receiver)) {
      case MessageSocket::Reception::message:
        break;
      case MessageSocket::Reception::end:
        return EXIT_SUCCESS;
      default:
        return EXIT_FAILURE;
    }
    const std::optional<ScanRequest> request = decodeScanRequest(bytes);
    if (!request || !receiver) {
      return EXIT_FAILURE;
    }
    extension.send(encode(scanInProcess(extension, *request, std::move(receiver), confinement)));
  }
}
