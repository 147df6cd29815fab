// memory_bench [NUMBER-OF-FILES…]: what the extension's processes take together, beside "svn
// status" on the same tree in the same run.
#include <cstdio>
#include <stdexcept>

#include "bench/Asker.h"
#include "bench/Benchmark.h"
#include "bench/Machine.h"
#include "bench/ProcessMemory.h"
#include "bench/SampleTrees.h"
#include "bench/Sizes.h"

namespace {

constexpr int runCount = 3;

// The extension scans by itself two and a half seconds after its start; this is before.
constexpr Seconds stillBeforeScan = 0.3;
constexpr Seconds patienceBeforeScan = 1.5;

// Longer than the two seconds for which badges are kept, so what is given back then is gone.
constexpr Seconds stillAfterScan = 3;
constexpr Seconds patienceAfterScan = 15;

double inMebibytes(double kibibytes) {
  return kibibytes / 1024;
}

// All in KiB.
struct Measured {
  long before = 0;
  long greatest = 0;
  int readingCount = 0;
  long after = 0;
};

Measured measureExtension(const std::string &rootPath) {
  const ExtensionSession session;
  session.halvern({"add", rootPath});
  Asker asker(session, rootPath);
  asker.client().directoryURLs();  // starts it
  const std::string process = std::to_string(session.extensionProcess());

  Measured measured;
  measured.before = proportionalMemoryAtRest(process, stillBeforeScan, patienceBeforeScan);
  asker.client().catchUp();
  if (!asker.client().changed.empty()) {
    throw std::runtime_error("the extension has scanned before it was asked");
  }
  MemoryPeak peak(process);
  asker.askForRoot();
  measured.greatest = peak.end();
  measured.readingCount = peak.readingCount();
  asker.settle();
  measured.after = proportionalMemoryAtRest(process, stillAfterScan, patienceAfterScan);
  return measured;
}

long measureNothingRegistered() {
  const ExtensionSession session;
  BusClient(session.bus()).directoryURLs();  // starts it
  return proportionalMemoryAtRest(std::to_string(session.extensionProcess()), stillBeforeScan,
                                  patienceBeforeScan);
}

long measureStatus(const std::string &rootPath) {
  const StartedCommand status({"svn", "status", rootPath});
  MemoryPeak peak(status.processIdentifier());
  if (status.waitForEnd().status != 0) {
    throw std::runtime_error("svn status fails");
  }
  return peak.end();
}

// A row of the table.
void compare(const WorkingCopy &wc, int fileCount, const char *changed) {
  std::vector<double> before;
  std::vector<double> greatest;
  std::vector<double> readings;
  std::vector<double> after;
  std::vector<double> statuses;
  for (int i = 0; i < runCount; ++i) {
    // One after the other: while both run, they would share their libraries.
    statuses.push_back(static_cast<double>(measureStatus(wc.path())));
    const Measured measured = measureExtension(wc.path());
    before.push_back(static_cast<double>(measured.before));
    greatest.push_back(static_cast<double>(measured.greatest));
    readings.push_back(measured.readingCount);
    after.push_back(static_cast<double>(measured.after));
  }
  const Runs peak = summaryOf(greatest);
  const Runs status = summaryOf(statuses);
  std::printf("| %d | %s | %.1f | %.1f (%.1f–%.1f) | %.1f | %.1f (%.1f–%.1f) | %.2f | %.0f |\n",
              fileCount, changed, inMebibytes(summaryOf(before).median), inMebibytes(peak.median),
              inMebibytes(peak.least), inMebibytes(peak.greatest),
              inMebibytes(summaryOf(after).median), inMebibytes(status.median),
              inMebibytes(status.least), inMebibytes(status.greatest), peak.median / status.median,
              summaryOf(readings).median);
  std::fflush(stdout);
}

void printTitle() {
  std::printf(
      "%s\n\nProportional set size of the extension's processes together, in MiB; median "
      "(least–greatest) of %d. The greatest are the greatest of many readings. The benchmark and "
      "the bus map some of the libraries too, and bear a part of them. At rest afterwards means "
      "after the scan that was asked for and the one of the extension's own accord.\n\n"
      "With nothing registered: %.1f\n\n"
      "| files | changed | at rest before the first question | greatest in the first scan | "
      "at rest afterwards | svn status, greatest | ratio of the greatest | readings in the scan |\n"
      "|---|---|---|---|---|---|---|---|\n",
      machineText().c_str(), runCount,
      inMebibytes(static_cast<double>(measureNothingRegistered())));
  std::fflush(stdout);
}

void compareOn(int fileCount) {
  const TemporaryDirectory directory;
  const WorkingCopy wc = makeWorkingCopy(directory, fileCount);
  compare(wc, fileCount, "none");
  editEvery(wc, 100, fileCount);
  compare(wc, fileCount, "1 %");
  editEvery(wc, 1, fileCount);
  compare(wc, fileCount, "100 %");
}

}  // namespace

int main(int argumentCount, char **arguments) {
  const std::vector<int> sizes = sizesInArguments(argumentCount, arguments, {1'000, 100'000});
  return runBenchmark([&sizes] {
    printTitle();
    for (const int size : sizes) {
      compareOn(size);
    }
  });
}
