#include "tests/reliability/RunningScan.h"

#include <algorithm>
#include <vector>

#include "tests/support/bus/PrivateBus.h"
#include "tests/support/processes/ProcessTree.h"

namespace {

constexpr const char *program = "halvern-status-worker";

ScanProcesses processesNow(pid_t extension) {
  ScanProcesses found;
  for (const pid_t process : processesOfProgram(program, extension)) {
    std::vector<pid_t> beneath = processesOfProgram(program, process);
    std::erase(beneath, process);
    if (!beneath.empty()) {
      found = {process, beneath.front()};
    } else if (found.worker < 0) {
      found.worker = process;
    }
  }
  return found;
}

}  // namespace

pid_t workerOf(pid_t extension) {
  return processesNow(extension).worker;
}

ScanProcesses waitForScan(pid_t extension) {
  ScanProcesses found;
  turnMainLoopUntil([&] {
    found = processesNow(extension);
    return found.scan >= 0;
  });
  return found;
}
