#include "platform/linux/spawner/DesktopRequests.h"

#include <cstdlib>
#include <sys/prctl.h>
#include <unistd.h>

#include "platform/linux/Patience.h"
#include "platform/linux/spawner/ForkedProcess.h"
#include "platform/linux/spawner/Messages.h"

namespace platform {

namespace {

// Leaves the spawner's ways: of its open files only the standard ones and the answer are kept,
// which gets a number of its own. Signals end the process again, first of all the one that comes
// when the time is up.
int beginRequest(const char *name, unsigned patience, int answer) {
  prctl(PR_SET_NAME, name);
  const int kept = keepOnly(answer);
  setsid();
  restoreSignals();
  alarm(patience);
  return kept;
}

}  // namespace

void findApplication(const std::string &name, int answer) {
  answer = beginRequest("halvern-find", systemCallPatience.count(), answer);
  makeEnvironmentQuiet();
  if (const std::optional<std::string> path = pathOfDesktopEntry(name)) {
    sendMessage(answer, spawnerWords.found, {*path}, {});
  }
  std::_Exit(EXIT_SUCCESS);
}

void carryOutLaunch(const ApplicationLaunch &launch, const Launcher &launcher, int answer) {
  answer = beginRequest("halvern-launch", launchPatience, answer);
  const Variables variables = makeEnvironmentQuiet();
  if (startApplicationUnit(launcher, launch, variables) == UnitStart::refused) {
    launchApplication(launch, variables, [answer] { close(answer); });
  }
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace platform
