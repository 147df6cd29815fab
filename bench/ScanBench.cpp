// scan_bench [NUMBER-OF-FILES…]: the scanner by itself, beside "svn status", a walk by one thread,
// and a scan by a status worker, on the same tree in the same run.
#include <algorithm>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <vector>

#include "bench/Benchmark.h"
#include "bench/Machine.h"
#include "bench/Measure.h"
#include "bench/SampleTrees.h"
#include "bench/Sizes.h"
#include "platform/linux/worker/WorkerScanner.h"
#include "scanner/SVNError.h"
#include "scanner/StatusWalk.h"
#include "tests/platform/worker/StartedWorker.h"

namespace {

constexpr int runCount = 11;

// Keeps nothing of what it is told.
svn_error_t *ignoreEntry(const char *, const svn_client_status_t *, const svn_wc_status2_t *) {
  return SVN_NO_ERROR;
}

void require(const SVNError &error) {
  if (error != nullptr) {
    throw std::runtime_error("the scan fails");
  }
}

void scan(const std::string &root) {
  require(SVNError(KTRWorkingCopyStatusScanner::scanLocalTarget(
      root, std::nullopt,
      KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(svn_depth_infinity), ignoreEntry)));
}

// By a worker that is kept, as in the extension.
void scanInWorker(const std::string &root) {
  static WorkerScanner scanner(startsWorker());
  require(SVNError(scanner.scan(
      root, std::nullopt,
      KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(svn_depth_infinity), ignoreEntry)));
}

void scanByOneThread(const std::string &root) {
  const KTRWorkingCopyEntryBlock block = ignoreEntry;
  StatusWalk walk(root, std::nullopt,
                  KTRWorkingCopyStatusScanner::localScanOptionsWithDepth(svn_depth_infinity), block,
                  {});
  require(walk.run());
}

// A row of the table: four ways in turn, each as often at every place of the turn.
void compare(const WorkingCopy &wc, int fileCount, const char *shape, const char *changed) {
  std::vector<Seconds> scans;
  std::vector<Seconds> singles;
  std::vector<Seconds> workers;
  std::vector<Seconds> statuses;
  const std::vector<std::function<void()>> ways = {
      [&] { scans.push_back(timeOf([&] { scan(wc.path()); })); },
      [&] { singles.push_back(timeOf([&] { scanByOneThread(wc.path()); })); },
      [&] { workers.push_back(timeOf([&] { scanInWorker(wc.path()); })); },
      [&] {
        statuses.push_back(runProgram({"svn", "status", wc.path()}).duration);
      }};
  for (int i = 0; i < runCount; ++i) {
    for (std::size_t way = 0; way < ways.size(); ++way) {
      ways[(static_cast<std::size_t>(i) + way) % ways.size()]();
    }
  }
  const long memory = runProgram({SCAN_ONCE, wc.path()}).peakMemory;
  const long statusMemory = runProgram({"svn", "status", wc.path()}).peakMemory;
  const Runs ours = summaryOf(scans);
  const Runs single = summaryOf(singles);
  const Runs worker = summaryOf(workers);
  const Runs status = summaryOf(statuses);
  std::printf(
      "| %7d | %s | %s | %.1f (%.1f–%.1f) | %.1f (%.1f–%.1f) | %.1f (%.1f–%.1f) | "
      "%.1f (%.1f–%.1f) | %.2f | %.2f | %.2f | "
      "%.1f | "
      "%.1f |\n",
      fileCount, shape, changed, inMilliseconds(ours.median), inMilliseconds(ours.least),
      inMilliseconds(ours.greatest), inMilliseconds(single.median), inMilliseconds(single.least),
      inMilliseconds(single.greatest), inMilliseconds(worker.median), inMilliseconds(worker.least),
      inMilliseconds(worker.greatest), inMilliseconds(status.median), inMilliseconds(status.least),
      inMilliseconds(status.greatest), ours.median / status.median, ours.median / single.median,
      worker.median / ours.median, static_cast<double>(memory) / 1024,
      static_cast<double>(statusMemory) / 1024);
  std::fflush(stdout);
}

void compareOn(int fileCount) {
  const TemporaryDirectory directory;
  const WorkingCopy wc = makeWorkingCopy(directory, fileCount);
  compare(wc, fileCount, "nested", "none");
  editEvery(wc, 100, fileCount);
  compare(wc, fileCount, "nested", "1 %");
}

// The worst case: nothing between the root and very many directories, of which each is a part.
void compareOnFlat(int fileCount) {
  const TemporaryDirectory directory;
  const WorkingCopy wc = makeWorkingCopy(directory, fileCount, {.directoriesInOne = fileCount});
  compare(wc, fileCount, "flat", "none");
}

}  // namespace

int main(int argumentCount, char **arguments) {
  const std::vector<int> sizes =
      sizesInArguments(argumentCount, arguments, {1'000, 10'000, 100'000});
  KTREnsureSVNCoreInitialization();
  std::printf(
      "%s; warm cache\n\nThe scanner by itself; median (least–greatest) of %d, in turn\n\n"
      "| files | directories | changed | scan, ms | by one thread, ms | in a worker, "
      "ms | svn status, ms | ratio to svn status | ratio to one thread | worker to scan | "
      "peak MiB | svn's |\n|---|---|---|---|---|---|---|---|---|---|---|---|\n",
      machineText().c_str(), runCount);
  return runBenchmark([&sizes] {
    for (const int size : sizes) {
      compareOn(size);
      compareOnFlat(size);
    }
  });
}
