// The status worker: halvern-status-worker.
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>

#include "platform/linux/StandardStreams.h"
#include "platform/linux/worker/WorkerDescriptor.h"
#include "platform/linux/worker/program/Confinement.h"
#include "platform/linux/worker/program/ScanServer.h"
#include "scanner/KTRWorkingCopyStatusScanner.h"

namespace {

constexpr int exitUsage = 2;

int printUsage(std::FILE *stream) {
  std::fputs(
      "Usage: halvern-status-worker [--help | --version]\n"
      "\n"
      "Scans working copies for Halvern's file-manager extension, which starts it. It has\n"
      "no use by itself; to see the badges of a working copy, use \"halvern badges\".\n",
      stream);
  return stream == stdout ? EXIT_SUCCESS : exitUsage;
}

// Whether the extension process has started this one.
bool isConnected() {
  struct stat status {};
  return fstat(workerDescriptor, &status) == 0 && S_ISSOCK(status.st_mode);
}

}  // namespace

int main(int argumentCount, char **arguments) {
  platform::prepareStandardStreams();
  const std::string_view argument = argumentCount == 2 ? arguments[1] : "";
  if (argument == "--help") {
    return printUsage(stdout);
  }
  if (argument == "--version") {
    std::puts("halvern-status-worker " HALVERN_VERSION);
    return EXIT_SUCCESS;
  }
  if (argumentCount != 1 || !isConnected()) {
    return printUsage(stderr);
  }
  KTREnsureSVNCoreInitialization();
  if (const platform::Outcome outcome = confineWorker(); !outcome) {
    std::fprintf(stderr, "halvern-status-worker: The process cannot be confined: %s\n",
                 outcome.reason().c_str());
    return EXIT_FAILURE;
  }
  const int status = serveScans(MessageSocket(platform::FileDescriptor(workerDescriptor)));
  std::_Exit(status);
}
