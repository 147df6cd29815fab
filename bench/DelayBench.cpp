#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "bench/Asker.h"
#include "bench/Measure.h"
#include "bench/SampleTrees.h"
#include "bench/WatchBench.h"
#include "tests/support/bus/BusClient.h"
#include "tests/support/session/ExtensionSession.h"

namespace {

constexpr int runCount = 9;

// What passes on purpose: half a second of coalescing, two seconds of quiet.
constexpr Seconds deliberateDelay = 2.5;

// Until the badge is announced.
void waitForChange(BusClient &client, const std::string &url) {
  if (!client.waitForChange(url)) {
    throw std::runtime_error("no badge comes for " + url);
  }
  client.changed.clear();
}

void measureDelayIn(int fileCount) {
  const ExtensionSession session;
  const WorkingCopy wc = makeWorkingCopy(session.directory(), fileCount);
  session.halvern({"add", wc.path()});
  BusClient client(session.bus());
  client.directoryURLs();  // starts the extension
  waitForChange(client, urlText(wc.path(), true));

  std::vector<Seconds> delays;
  std::vector<Seconds> statuses;
  for (int i = 0; i < runCount; ++i) {
    // In different folders, all over the tree.
    const int file = i * (fileCount / runCount);
    const std::string path = wc / pathInTree(file);
    delays.push_back(timeOf([&] {
                       std::ofstream(path, std::ios::app) << "edited\n";
                       waitForChange(client, urlText(path));
                     }) -
                     deliberateDelay);
    statuses.push_back(runProgram({"svn", "status", wc.path()}).duration);
  }
  const Runs delay = summaryOf(delays);
  const Runs status = summaryOf(statuses);
  std::printf("| %6d | %.1f (%.1f–%.1f) | %.1f (%.1f–%.1f) |\n", fileCount,
              inMilliseconds(delay.median), inMilliseconds(delay.least),
              inMilliseconds(delay.greatest), inMilliseconds(status.median),
              inMilliseconds(status.least), inMilliseconds(status.greatest));
  std::fflush(stdout);
}

}  // namespace

void measureDelay() {
  std::printf(
      "\nFrom an edit to the signal with its badge, less the %.1f s of coalescing and quiet; "
      "median "
      "(least–greatest) of %d\n\n| files | beyond them, ms | svn status, ms |\n|---|---|---|\n",
      deliberateDelay, runCount);
  for (const int fileCount : {1'000, 10'000}) {
    measureDelayIn(fileCount);
  }
}
